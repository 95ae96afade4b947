#pragma once

#include <cstddef>
#include <cstdint>

#include "HostChannel.h"

namespace quarl::host {

/// Tells the other end when the process is about to die because a module wrote past one of its buffers. All signals
/// keep their usual end, death.
class OverrunWatch {
 public:
  /// Once in a process; the channel must live until its end.
  static void Install(HostChannel& channel);
  /// A stack for the handler, for the calling thread; without it a stack that is used up ends the process unreported.
  static void PrepareThread();
};

/// One forbidden stretch, watched as long as this object lives, on behalf of one request.
class WatchedGuard {
 public:
  WatchedGuard(const void* begin, std::size_t size, std::uint32_t request);
  ~WatchedGuard();
  WatchedGuard(WatchedGuard&& other) noexcept;
  /// From now on on behalf of another request; on the thread that may fault.
  void Follow(std::uint32_t request);
  WatchedGuard(const WatchedGuard&) = delete;
  WatchedGuard& operator=(const WatchedGuard&) = delete;
  WatchedGuard& operator=(WatchedGuard&&) = delete;

 private:
  int slot_ = -1;
};

}  // namespace quarl::host
