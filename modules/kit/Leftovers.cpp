#include "kit/Leftovers.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <csignal>

#include "base/ProcessFiles.h"

namespace quarl::kit {
namespace {

constexpr const char* kVariable = "QUARL_RUN";

/// The value of the mark in a process's environment; "" when it has none, cannot be looked at or has ended.
std::string MarkOf(pid_t process) {
  const std::string label = std::string(kVariable) + '=';
  const std::string entry = EnvironmentEntry(process, [&](std::string_view text) { return text.starts_with(label); });
  return entry.empty() ? std::string() : entry.substr(label.size());
}

}  // namespace

Leftovers& Leftovers::Instance() {
  static Leftovers& instance = *new Leftovers;  // never destroyed: threads may still be in it when the process ends
  return instance;
}

Leftovers::Mark::Mark() {
  Leftovers& all = Instance();
  const std::lock_guard lock(all.mutex_);
  if (all.count_ == 0) ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
  value_ = std::to_string(::getpid()) + '-' + std::to_string(++all.count_);
  all.active_.insert(value_);
}

std::pair<std::string, std::string> Leftovers::Mark::Variable() const {
  return {kVariable, value_};
}

void Leftovers::Mark::Release() {
  Leftovers& all = Instance();
  const std::lock_guard lock(all.mutex_);
  all.active_.erase(value_);
}

pid_t Leftovers::Start(const std::function<pid_t()>& start) {
  // A child must not end up among the leftovers before it is known.
  const std::lock_guard lock(mutex_);
  ReapAbandoned();
  const pid_t child = start();
  if (child > 0) started_.insert(child);
  return child;
}

void Leftovers::Forget(pid_t child) {
  const std::lock_guard lock(mutex_);
  started_.erase(child);
}

void Leftovers::Abandon(pid_t child) {
  const std::lock_guard lock(mutex_);
  abandoned_.insert(child);
  ReapAbandoned();
}

void Leftovers::ReapAbandoned() {
  std::erase_if(abandoned_, [this](pid_t child) {
    const bool gone = ::waitpid(child, nullptr, WNOHANG) != 0;
    if (gone) started_.erase(child);
    return gone;
  });
}

std::size_t Leftovers::CountAbandoned() {
  const std::lock_guard lock(mutex_);
  ReapAbandoned();
  return abandoned_.size();
}

// The children of the main thread, to which every process comes whose parent has ended. A child may be missing while
// others end.
std::vector<pid_t> Leftovers::Children() {
  const std::string self = std::to_string(::getpid());
  if (!childrenFile_) childrenFile_ = OpenProcessFile("/proc/" + self + "/task/" + self + "/children");
  std::vector<pid_t> children;
  const std::string list = ReadProcessFile(childrenFile_);
  const char* const end = list.data() + list.size();
  for (const char* at = list.data(); at < end; ++at) {
    pid_t child = 0;
    const auto read = std::from_chars(at, end, child);
    if (read.ec == std::errc()) children.push_back(child);
    at = read.ptr;
  }
  return children;
}

bool Leftovers::EndSome(std::vector<Descriptor>& ending) {
  const std::string own = std::to_string(::getpid()) + '-';
  const std::lock_guard lock(mutex_);
  bool found = false;
  for (const pid_t child : Children()) {
    if (started_.contains(child)) continue;
    if (::waitpid(child, nullptr, WNOHANG) != 0) {
      doomed_.erase(child);
      found = true;
      continue;
    }
    if (doomed_.contains(child)) continue;
    const std::string mark = MarkOf(child);
    if (!mark.starts_with(own) || active_.contains(mark)) continue;
    found = true;
    ::kill(child, SIGKILL);
    doomed_.insert(child);
    ending.push_back(ProcessDescriptor(child));
  }
  return found;
}

Task<void> Leftovers::End(std::chrono::milliseconds limit) {
  const Deadline deadline(limit);
  std::vector<Descriptor> ending;
  // The end of one may bring its own children here.
  while (EndSome(ending) && !deadline.IsOver()) {
    for (const Descriptor& exit : ending) {
      const Deadline moment(exit ? deadline.Left() : std::chrono::milliseconds(1));
      co_await Ready(exit.Get(), POLLIN, moment);
    }
    ending.clear();
  }
}

}  // namespace quarl::kit
