#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace quarl {

/// Owns a file descriptor; -1 is none.
class Descriptor {
 public:
  explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }

  int Get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }
  void Close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_;
};

/// The same file under a number that is not below this one, closed in a new program; none when that cannot be had, and
/// errno says why.
inline Descriptor Raised(Descriptor from, int lowest) {
  if (from.Get() >= lowest) return from;
  return Descriptor(::fcntl(from.Get(), F_DUPFD_CLOEXEC, lowest));
}

}  // namespace quarl
