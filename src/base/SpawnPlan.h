#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace quarl {

/// How a program is started: in a session and process group of its own, without a terminal on which somebody could be
/// asked; no signal blocked or ignored; /dev/null as its input; of this program's descriptors only those that are
/// given.
class SpawnPlan {
 public:
  /// A descriptor and the number that it gets in the new program.
  using Given = std::pair<int, int>;

  /// Each descriptor is above all numbers that are given, or STDIN_FILENO for /dev/null.
  explicit SpawnPlan(const std::vector<Given>& given);
  ~SpawnPlan();
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;

  /// @param words the path of the program and its arguments. 0, or the error's number.
  int Start(std::vector<std::string> words, std::vector<std::string> environment, pid_t& process) const;

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace quarl
