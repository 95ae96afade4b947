#include "service/workers/WorkerProcess.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <vector>

#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/SpawnPlan.h"

namespace quarl::service {
namespace {

constexpr int kPartsAfterEnd = 64;
constexpr int kNice = 5;  // the service itself comes first

Error Failure(const QString& what, int code) {
  return Error(QStringLiteral("%1: %2.").arg(what, QString::fromStdString(std::generic_category().message(code))));
}

/// The environment of a worker: this one's, without what speaks to the service manager.
std::vector<std::string> WorkerEnvironment() {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view variable = *entry;
    const auto names = [&](std::string_view name) { return variable.starts_with(name); };
    if (!names("NOTIFY_SOCKET=") && !names("WATCHDOG_") && !names("LISTEN_")) result.emplace_back(*entry);
  }
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
  const Descriptor channel = Raised(Descriptor(ends[1]), plugins::kHostChannel + 1);
  int code = channel ? 0 : errno;
  if (channel) fcntl(channel.Get(), F_SETFL, 0);
  // What a module prints must not fill the file or journal of the service; it has a call for its log lines.
  const SpawnPlan plan(
      {{STDIN_FILENO, STDOUT_FILENO}, {STDIN_FILENO, STDERR_FILENO}, {channel.Get(), plugins::kHostChannel}});
  std::vector<std::string> words{QFile::encodeName(setup.program).toStdString(), "--worker",
                                 std::to_string(setup.threads)};
  if (code == 0) code = plan.Start(std::move(words), WorkerEnvironment(), pid_);
  if (code == 0) {
    setpriority(PRIO_PROCESS, static_cast<id_t>(pid_), kNice);
    const sched_param none{};
    sched_setscheduler(pid_, SCHED_BATCH, &none);  // programs that it starts cost 2 % less
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
  killed_ = true;
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
