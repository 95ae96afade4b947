#pragma once

#include <netinet/in.h>

#include <QString>

namespace quarl::netscan {

/// A name or text from the network as it may be shown and listed: without blanks around it; control and formatting
/// characters, halves of characters, "," and "|" are "_"; at most 253 characters, a longer one ends in "...".
QString CleanName(const QString& raw);

/// The first label of a name in the domain "local"; every other name unchanged.
QString WithoutLocalDomain(const QString& name);

/// Dotted; empty for 0. Network byte order.
QString AddressText(in_addr_t address);

}  // namespace quarl::netscan
