#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/Descriptor.h"
#include "kit/Steps.h"

namespace quarl::kit {

/// Finds and ends what programs of this process leave behind, whatever session it has moved to: this process becomes
/// the parent of orphans of its descendants, and a mark in their environment tells from which program they come. A
/// process that moves away and changes its environment as well escapes. Nothing else in this process may start children
/// once there is a mark. Thread-safe; one a process.
class Leftovers {
 public:
  static Leftovers& Instance();

  /// One run of a program; what bears the mark is left alone while it exists. The first makes this process the parent
  /// of orphans.
  class Mark {
   public:
    Mark();
    ~Mark() { Release(); }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    /// What has to stand in the environment of the program: name and value.
    std::pair<std::string, std::string> Variable() const;
    /// The program has ended.
    void Release();

   private:
    std::string value_;
  };

  /// Runs what starts a child and gives its process id, and remembers that it is waited for elsewhere.
  pid_t Start(const std::function<pid_t()>& start);
  /// The child was waited for.
  void Forget(pid_t child);
  /// The child was killed, and nobody waits for it any more.
  void Abandon(pid_t child);
  /// Abandoned children that have not ended.
  std::size_t CountAbandoned();
  /// Ends what is left of all programs that have ended. Comes back within the limit; what has not ended by then, the
  /// next call finds.
  Task<void> End(std::chrono::milliseconds limit);

 private:
  std::vector<pid_t> Children();
  /// Kills what is found. Whether there was something new, and descriptors of what was killed now.
  bool EndSome(std::vector<Descriptor>& ending);
  void ReapAbandoned();

  std::mutex mutex_;
  std::set<pid_t> started_;
  std::set<pid_t> abandoned_;
  std::set<pid_t> doomed_;  ///< orphans that were killed and have not ended
  Descriptor childrenFile_;
  std::set<std::string> active_;
  unsigned long count_ = 0;
};

}  // namespace quarl::kit
