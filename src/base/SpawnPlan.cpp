#include "base/SpawnPlan.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace quarl {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

SpawnPlan::SpawnPlan(const std::vector<Given>& given) {
  posix_spawn_file_actions_init(&actions_);
  posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDWR, 0);
  int last = STDERR_FILENO;
  for (const auto& [descriptor, number] : given) {
    posix_spawn_file_actions_adddup2(&actions_, descriptor, number);
    last = std::max(last, number);
  }
  posix_spawn_file_actions_addclosefrom_np(&actions_, last + 1);
  posix_spawnattr_init(&attributes_);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes_, &signals);
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes_, &signals);
  posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

SpawnPlan::~SpawnPlan() {
  posix_spawnattr_destroy(&attributes_);
  posix_spawn_file_actions_destroy(&actions_);
}

int SpawnPlan::Start(std::vector<std::string> words, std::vector<std::string> environment, pid_t& process) const {
  return posix_spawn(&process, words.front().c_str(), &actions_, &attributes_, Pointers(words).data(),
                     Pointers(environment).data());
}

}  // namespace quarl
