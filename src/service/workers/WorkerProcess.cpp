#include "service/workers/WorkerProcess.h"

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

#include "base/Error.h"

namespace quarl::service {
namespace {

constexpr int kPartsAfterEnd = 64;
constexpr int kNice = 5;  // the service itself comes first

Error Failure(const QString& what, int code) {
  return Error(QStringLiteral("%1: %2.").arg(what, QString::fromStdString(std::generic_category().message(code))));
}

/// Attributes and file actions of a start.
struct SpawnPlan {
  posix_spawnattr_t attributes{};
  posix_spawn_file_actions_t actions{};

  explicit SpawnPlan(int channel) {
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    sigset_t all{};
    sigset_t none{};
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    // What a module prints must not fill the file or journal of the service; it has a call for its log lines.
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, channel, plugins::kHostChannel);
    posix_spawn_file_actions_addclosefrom_np(&actions, plugins::kHostChannel + 1);
  }
  ~SpawnPlan() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
};

/// The environment of a worker: this one's, without what speaks to the service manager.
std::vector<char*> WorkerEnvironment() {
  std::vector<char*> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view variable = *entry;
    const auto names = [&](std::string_view name) { return variable.starts_with(name); };
    if (!names("NOTIFY_SOCKET=") && !names("WATCHDOG_") && !names("LISTEN_")) result.push_back(*entry);
  }
  result.push_back(nullptr);
  return result;
}

}  // namespace

WorkerProcess::WorkerProcess(const WorkerSetup& setup, ChildKeeper& keeper, CgroupTree* cgroups, Events events)
    : keeper_(keeper), events_(std::move(events)) {
  if (cgroups != nullptr) cgroup_ = cgroups->Make(setup.memoryLimit);
  Spawn(setup);
  if (cgroup_ && !cgroup_->Add(pid_)) cgroup_.reset();
  try {
    keeper_.Keep(pid_, [this](int status) { Ended(status); });
  } catch (const Error&) {
    close(socket_);
    throw;
  }
  readable_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
  writable_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Write);
  writable_->setEnabled(false);
  flush_.setSingleShot(true);
  QObject::connect(readable_.get(), &QSocketNotifier::activated, &flush_, [this] { Receive(); });
  QObject::connect(writable_.get(), &QSocketNotifier::activated, &flush_, [this] { Flush(); });
  QObject::connect(&flush_, &QTimer::timeout, &flush_, [this] { Flush(); });
}

WorkerProcess::~WorkerProcess() {
  if (pid_ != 0) {
    if (cgroup_) cgroup_->Kill();
    keeper_.KillAndForget(pid_);
  }
  readable_.reset();
  writable_.reset();
  if (socket_ >= 0) close(socket_);
}

void WorkerProcess::Spawn(const WorkerSetup& setup) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) {
    throw Failure(QStringLiteral("A worker process could not be started"), errno);
  }
  socket_ = ends[0];
  // The child's end blocks, and lies above the numbers that the child gives to its own.
  const int channel = fcntl(ends[1], F_DUPFD_CLOEXEC, plugins::kHostChannel + 1);
  close(ends[1]);
  if (channel >= 0) fcntl(channel, F_SETFL, 0);
  const QByteArray program = QFile::encodeName(setup.program);
  std::array<std::string, 3> words{program.toStdString(), "--worker", std::to_string(setup.threads)};
  std::array<char*, words.size() + 1> arguments{};
  for (std::size_t word = 0; word < words.size(); ++word) arguments[word] = words[word].data();
  const SpawnPlan plan(channel);
  const int code = channel < 0 ? errno
                               : posix_spawn(&pid_, program.constData(), &plan.actions, &plan.attributes,
                                             arguments.data(), WorkerEnvironment().data());
  if (channel >= 0) close(channel);
  if (code == 0) {
    setpriority(PRIO_PROCESS, static_cast<id_t>(pid_), kNice);
    const sched_param none{};
    sched_setscheduler(pid_, SCHED_BATCH, &none);  // nobody waits for its next millisecond
    return LimitMemory(setup);
  }
  close(socket_);
  socket_ = -1;
  pid_ = 0;
  throw Failure(QStringLiteral("%1 could not be started").arg(setup.program), code);
}

void WorkerProcess::LimitMemory(const WorkerSetup& setup) {
  if (setup.memoryLimit <= 0) return;
  // Before the first request. The stacks of its threads count, too.
  rlimit stack{};
  getrlimit(RLIMIT_STACK, &stack);
  constexpr rlim_t kLargestStack = 64UL << 20;
  const rlim_t stacks = static_cast<rlim_t>(setup.threads) * std::min(stack.rlim_cur, kLargestStack);
  const rlim_t bytes = static_cast<rlim_t>(setup.memoryLimit) + stacks;
  const rlimit limit{bytes, bytes};
  prlimit(pid_, RLIMIT_DATA, &limit, nullptr);
}

void WorkerProcess::Send(const plugins::HostRequest& request) {
  AppendFrame(outgoing_, request);
  if (!writable_->isEnabled() && !flush_.isActive()) flush_.start(0);
}

void WorkerProcess::Flush() {
  while (sent_ < outgoing_.size()) {
    const ssize_t count = send(socket_, outgoing_.data() + sent_, outgoing_.size() - sent_, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      // Of a closed socket the process's end tells.
      writable_->setEnabled(errno == EAGAIN);
      if (sent_ > outgoing_.size() / 2) {
        outgoing_.erase(0, sent_);
        sent_ = 0;
      }
      return;
    }
    sent_ += static_cast<std::size_t>(count);
  }
  writable_->setEnabled(false);
  outgoing_.clear();
  sent_ = 0;
}

void WorkerProcess::Receive() {
  std::array<char, 65536> part{};
  const ssize_t count = recv(socket_, part.data(), part.size(), 0);
  if (count <= 0) {
    if (count == 0 || (errno != EAGAIN && errno != EINTR)) readable_->setEnabled(false);
    return;
  }
  incoming_.Add({part.data(), static_cast<std::size_t>(count)});
  while (auto content = incoming_.Next()) {
    auto reply = plugins::ReadReply(*content);
    if (!reply) return Kill();
    events_.reply(std::move(*reply));
  }
  if (incoming_.Broken()) Kill();
}

void WorkerProcess::Kill() {
  if (pid_ == 0) return;
  if (cgroup_) cgroup_->Kill();
  keeper_.Kill(pid_);
}

void WorkerProcess::Ended(int waitStatus) {
  pid_ = 0;
  // What it said before its end counts, as far as the socket holds it: a process that it left could say more for ever.
  for (int part = 0; part < kPartsAfterEnd && readable_->isEnabled(); ++part) {
    char byte = 0;
    if (recv(socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) <= 0) break;
    Receive();
  }
  readable_->setEnabled(false);
  writable_->setEnabled(false);
  events_.ended(waitStatus);
}

}  // namespace quarl::service
