#include "kit/Leftovers.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <sstream>
#include <vector>

#include "base/ProcessFiles.h"
#include "kit/Deadline.h"

namespace quarl::kit {
namespace {

constexpr const char* kVariable = "QUARL_RUN";

/// The children of the main thread, to which every process comes whose parent has ended. A child may be missing while
/// others end.
std::vector<pid_t> Children() {
  std::vector<pid_t> children;
  const std::string self = std::to_string(::getpid());
  std::istringstream list(ReadProcessFile("/proc/" + self + "/task/" + self + "/children"));
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

/// The value of the mark in a process's environment; "" when it has none, cannot be looked at or has ended.
std::string MarkOf(pid_t process) {
  const std::string label = std::string(kVariable) + '=';
  const std::string entry = EnvironmentEntry(process, [&](std::string_view text) { return text.starts_with(label); });
  return entry.empty() ? std::string() : entry.substr(label.size());
}

void WaitForEnd(pid_t child, std::chrono::milliseconds limit) {
  const Descriptor exit = ProcessDescriptor(child);
  pollfd wait{exit.Get(), POLLIN, 0};
  if (exit) ::poll(&wait, 1, static_cast<int>(limit.count()));
}

}  // namespace

Leftovers& Leftovers::Instance() {
  static Leftovers& instance = *new Leftovers;  // never destroyed: threads may still be in it when the process ends
  return instance;
}

std::pair<std::string, std::string> Leftovers::NewMark() {
  const std::lock_guard lock(mutex_);
  ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
  std::string mark = std::to_string(::getpid()) + '-' + std::to_string(++count_);
  active_.insert(mark);
  return {kVariable, std::move(mark)};
}

pid_t Leftovers::Start(const std::function<pid_t()>& start) {
  // A child must not end up among the leftovers before it is known.
  const std::lock_guard lock(mutex_);
  const pid_t child = start();
  if (child > 0) started_.insert(child);
  return child;
}

void Leftovers::Forget(pid_t child) {
  const std::lock_guard lock(mutex_);
  started_.erase(child);
}

bool Leftovers::EndSome(std::chrono::milliseconds left) {
  const std::string own = std::to_string(::getpid()) + '-';
  std::vector<pid_t> ended;
  {
    const std::lock_guard lock(mutex_);
    for (const pid_t child : Children()) {
      if (started_.contains(child)) continue;
      if (::waitpid(child, nullptr, WNOHANG) != 0) {
        ended.push_back(0);
        continue;
      }
      const std::string mark = MarkOf(child);
      if (!mark.starts_with(own) || active_.contains(mark)) continue;
      ::kill(child, SIGKILL);
      ended.push_back(child);
    }
  }
  for (const pid_t child : ended) {
    if (child > 0) WaitForEnd(child, left);
  }
  return !ended.empty();
}

void Leftovers::End(const std::string& mark, std::chrono::milliseconds limit) {
  const Deadline deadline(limit);
  {
    const std::lock_guard lock(mutex_);
    active_.erase(mark);
  }
  while (EndSome(deadline.Left()) && !deadline.IsOver()) continue;
}

}  // namespace quarl::kit
