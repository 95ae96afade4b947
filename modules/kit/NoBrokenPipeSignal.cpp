#include "kit/NoBrokenPipeSignal.h"

#include <cerrno>
#include <ctime>

namespace quarl::kit {
namespace {

sigset_t BrokenPipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

bool IsPending() {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, SIGPIPE) == 1;
}

}  // namespace

NoBrokenPipeSignal::NoBrokenPipeSignal() : pendingBefore_(IsPending()) {
  const sigset_t set = BrokenPipe();
  pthread_sigmask(SIG_BLOCK, &set, &before_);
}

NoBrokenPipeSignal::~NoBrokenPipeSignal() {
  // What came meanwhile must not strike when the signal is let through again.
  if (!pendingBefore_ && IsPending()) {
    const sigset_t set = BrokenPipe();
    const timespec now{};
    while (sigtimedwait(&set, nullptr, &now) < 0 && errno == EINTR) {
    }
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace quarl::kit
