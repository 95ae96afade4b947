#pragma once

#include <sys/types.h>

#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "base/Descriptor.h"

class QSocketNotifier;

namespace quarl::service {

/// The child processes of this program. It makes the program the reaper of everything that its children leave behind:
/// a process that turns up here without having been started here is killed at once, so that nothing of a worker
/// outlives it, whatever it did to its group or session. At most one object a program; main thread.
class ChildKeeper {
 public:
  using Ended = std::function<void(int waitStatus)>;

  ChildKeeper();
  ~ChildKeeper();
  ChildKeeper(const ChildKeeper&) = delete;
  ChildKeeper& operator=(const ChildKeeper&) = delete;

  /// Takes over a child just started, the leader of a process group of its own.
  /// @param ended called once from the event loop when it has ended and was waited for.
  void Keep(pid_t child, Ended ended);
  /// Kills a kept child with its group. Its end is still told.
  void Kill(pid_t child);
  /// Kills a kept child with its group; its end is not told. One that the kernel cannot end at once, because it waits
  /// for a disk or a file server, is not waited for: it is buried when it ends.
  void KillAndForget(pid_t child);

 private:
  struct Child {
    Descriptor descriptor;
    std::unique_ptr<QSocketNotifier> notifier;
    Ended ended;
  };

  void Reap(pid_t child);
  void Sweep();
  /// Whether a killed child has been waited for; gives it a moment, the first time.
  bool Bury(pid_t child);

  std::map<pid_t, Child> children_;
  std::set<pid_t> lingering_;  ///< killed, not ended yet, and known not to end at once
  QTimer sweep_;
};

}  // namespace quarl::service
