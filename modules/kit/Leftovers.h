#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace quarl::kit {

/// Finds and ends what programs of this process leave behind, whatever session it has moved to: this process becomes
/// the parent of orphans of its descendants, and a mark in their environment tells from which program they come. A
/// process that moves away and changes its environment as well escapes. Nothing else in this process may start children
/// once there is a mark. Thread-safe; one a process.
class Leftovers {
 public:
  static Leftovers& Instance();

  /// Makes this process the parent of orphans. The variable that has to stand in the environment of a program that is
  /// started now: name and value.
  std::pair<std::string, std::string> NewMark();
  /// Runs what starts a child and gives its process id, and remembers that it is waited for elsewhere.
  pid_t Start(const std::function<pid_t()>& start);
  /// The child was waited for.
  void Forget(pid_t child);
  /// Ends what is left of a program that has ended, and of all others that have. Comes back within the limit; what has
  /// not ended by then, the next call finds.
  void End(const std::string& mark, std::chrono::milliseconds limit);

 private:
  bool EndSome(std::chrono::milliseconds left);

  std::mutex mutex_;
  std::set<pid_t> started_;
  std::set<std::string> active_;
  unsigned long count_ = 0;
};

}  // namespace quarl::kit
