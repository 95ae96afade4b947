#include "base/ProcessFiles.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quarl {

Descriptor ProcessDescriptor(pid_t process) {
  return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

std::string ReadProcessFile(const std::string& path) {
  return ReadProcessFile(OpenProcessFile(path));
}

Descriptor OpenProcessFile(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::string ReadProcessFile(const Descriptor& file) {
  std::string text;
  std::array<char, 16384> bytes;
  while (file) {
    const ssize_t size = ::pread(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(text.size()));
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
    text.append(bytes.data(), static_cast<std::size_t>(size));
  }
  return text;
}

std::string EnvironmentEntry(pid_t process, const std::function<bool(std::string_view)>& wanted) {
  const std::string environment = ReadProcessFile("/proc/" + std::to_string(process) + "/environ");
  std::string_view rest = environment;
  for (std::size_t end = rest.find('\0'); end != std::string_view::npos; end = rest.find('\0')) {
    const std::string_view entry = rest.substr(0, end);
    if (wanted(entry)) return std::string(entry);
    rest.remove_prefix(end + 1);
  }
  return {};
}

}  // namespace quarl
