#pragma once

#include <csignal>

namespace quarl::kit {

/// While it lives, writing to a pipe or connection that nobody reads fails with EPIPE and raises no SIGPIPE in this
/// thread. Nothing else of the process changes; a program started meanwhile inherits the blocked signal unless it is
/// given a mask of its own.
class NoBrokenPipeSignal {
 public:
  NoBrokenPipeSignal();
  ~NoBrokenPipeSignal();
  NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
  NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

 private:
  sigset_t before_{};
  bool pendingBefore_ = false;
};

}  // namespace quarl::kit
