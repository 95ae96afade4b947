#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "base/Descriptor.h"

namespace quarl {

/// A descriptor by which a process is signalled and its end awaited, whoever gets its number later; none when there is
/// no such process.
Descriptor ProcessDescriptor(pid_t process);

/// A file below /proc whole; "" when it cannot be read.
std::string ReadProcessFile(const std::string& path);
/// The same for one that is read again and again.
Descriptor OpenProcessFile(const std::string& path);
std::string ReadProcessFile(const Descriptor& file);

/// The first wanted entry "NAME=VALUE" of a process's environment; "" when there is none, and for a process that has
/// ended or is another user's.
std::string EnvironmentEntry(pid_t process, const std::function<bool(std::string_view)>& wanted);

}  // namespace quarl
