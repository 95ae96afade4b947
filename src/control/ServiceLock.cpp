#include "control/ServiceLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string>
#include <utility>

namespace quarl::control {
namespace {

constexpr std::size_t kStateBytes = 3;  // two digits or fewer, padded, and a line end

struct flock WholeFile(short type) {
  struct flock range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  return range;
}

LockError Failure(const QString& path) {
  return LockError(
      QStringLiteral("The file %1 cannot be locked: %2.").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
}

ServiceState StateIn(int descriptor) {
  char text[kStateBytes] = {};
  const ssize_t got = pread(descriptor, text, sizeof(text), 0);
  int state = 0;
  if (got <= 0 || std::from_chars(text, text + got, state).ec != std::errc{}) return ServiceState::StartPending;
  const bool known =
      state >= static_cast<int>(ServiceState::Stopped) && state <= static_cast<int>(ServiceState::Paused);
  return known ? static_cast<ServiceState>(state) : ServiceState::StartPending;
}

}  // namespace

std::optional<ServiceLock> ServiceLock::Take(const QString& path) {
  const int descriptor = open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) throw Failure(path);
  struct flock range = WholeFile(F_WRLCK);
  if (fcntl(descriptor, F_SETLK, &range) != 0) {
    const int reason = errno;
    close(descriptor);
    if (reason == EACCES || reason == EAGAIN) return std::nullopt;
    errno = reason;
    throw Failure(path);
  }
  ServiceLock lock(descriptor);
  lock.Publish(ServiceState::StartPending);
  return lock;
}

std::optional<ServiceLock::Holder> ServiceLock::Look(const QString& path) {
  const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  struct flock range = WholeFile(F_WRLCK);
  std::optional<Holder> holder;
  if (fcntl(descriptor, F_GETLK, &range) == 0 && range.l_type != F_UNLCK) {
    holder = Holder{range.l_pid, StateIn(descriptor)};
  }
  close(descriptor);
  return holder;
}

ServiceLock::ServiceLock(ServiceLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

ServiceLock& ServiceLock::operator=(ServiceLock&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

ServiceLock::~ServiceLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

void ServiceLock::Publish(ServiceState state) {
  std::string text = std::to_string(static_cast<int>(state));
  text.resize(kStateBytes - 1, ' ');
  text += '\n';
  // A state that cannot be written is seen as the one before; the lock itself tells that the process lives.
  [[maybe_unused]] const ssize_t written = pwrite(descriptor_, text.data(), text.size(), 0);
}

}  // namespace quarl::control
