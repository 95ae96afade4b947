#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "netscan/api/EchoSession.h"

namespace quarl::netscan {

/// The address of a text by the rule of inet_addr() (network byte order): nothing for a text that is no dotted
/// address, and for 255.255.255.255, which that rule cannot tell from one.
std::optional<in_addr_t> EchoAddress(const QString& text);

/// Native path of the helper program of this installation.
QString EchoHelperProgram();

/// The first way that this user may send echoes on: a datagram socket, a raw socket, the helper program. Null when
/// there is none, which the log then says once a process. Thread-safe.
std::unique_ptr<EchoChannel> OpenEchoChannel(const QString& helperProgram = EchoHelperProgram());

}  // namespace quarl::netscan
