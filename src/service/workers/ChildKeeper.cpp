#include "service/workers/ChildKeeper.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <tuple>
#include <vector>

#include "base/Error.h"
#include "base/ProcessFiles.h"

namespace quarl::service {
namespace {

constexpr int kSweepInterval = 250;  // milliseconds
constexpr int kEndMs = 100;          // a killed process ends much sooner, unless the kernel holds it

/// All children of this process, those that came to it when their parents ended included.
std::vector<pid_t> ChildrenNow() {
  std::vector<pid_t> children;
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    std::ifstream list(task.path() / "children");
    for (pid_t child = 0; list >> child;) children.push_back(child);
  }
  return children;
}

/// Of one that has ended.
int StatusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, WNOHANG) < 0 && errno == EINTR) continue;
  return status;
}

}  // namespace

ChildKeeper::ChildKeeper() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  sweep_.setInterval(kSweepInterval);
  QObject::connect(&sweep_, &QTimer::timeout, &sweep_, [this] { Sweep(); });
  sweep_.start();
}

ChildKeeper::~ChildKeeper() {
  while (!children_.empty()) KillAndForget(children_.begin()->first);
  Sweep();
}

void ChildKeeper::Keep(pid_t child, Ended ended) {
  Child kept;
  kept.descriptor = ProcessDescriptor(child);
  if (!kept.descriptor) {
    const int reason = errno;
    kill(-child, SIGKILL);
    std::ignore = Bury(child);
    throw Error(QStringLiteral("A process cannot be watched: %1.")
                    .arg(QString::fromStdString(std::generic_category().message(reason))));
  }
  kept.ended = std::move(ended);
  kept.notifier = std::make_unique<QSocketNotifier>(kept.descriptor.Get(), QSocketNotifier::Read);
  QObject::connect(kept.notifier.get(), &QSocketNotifier::activated, &sweep_, [this, child] { Reap(child); });
  children_.emplace(child, std::move(kept));
}

void ChildKeeper::Kill(pid_t child) {
  if (!children_.contains(child)) return;
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
}

void ChildKeeper::KillAndForget(pid_t child) {
  auto node = children_.extract(child);
  if (node.empty()) return;
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
  std::ignore = Bury(child);
  Sweep();
}

void ChildKeeper::Reap(pid_t child) {
  auto node = children_.extract(child);
  if (node.empty()) return;
  // The group's number stays taken until its leader has been waited for.
  kill(-child, SIGKILL);
  const int status = StatusOf(child);
  node.mapped().notifier->setEnabled(false);
  // The notifier is the sender of this very call.
  node.mapped().notifier.release()->deleteLater();
  Sweep();
  node.mapped().ended(status);
}

bool ChildKeeper::Bury(pid_t child) {
  if (!lingering_.contains(child)) {
    const Descriptor exit = ProcessDescriptor(child);
    pollfd ended{exit.Get(), POLLIN, 0};
    if (exit) std::ignore = poll(&ended, 1, kEndMs);
  }
  if (waitpid(child, nullptr, WNOHANG) == 0) {
    lingering_.insert(child);
    return false;
  }
  lingering_.erase(child);
  return true;
}

void ChildKeeper::Sweep() {
  // The children of one that is killed come here in turn.
  for (int round = 0; round < 16; ++round) {
    bool found = false;
    for (const pid_t child : ChildrenNow()) {
      if (children_.contains(child)) continue;
      kill(child, SIGKILL);
      found = Bury(child) || found;
    }
    if (!found) return;
  }
}

}  // namespace quarl::service
