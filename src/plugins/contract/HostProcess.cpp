#include "plugins/contract/HostProcess.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include "base/ProcessFiles.h"
#include "base/SpawnPlan.h"
#include "plugins/contract/HostProtocol.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

// Above the numbers that the new process uses, so that none is overwritten on the way.
Descriptor OutOfTheWay(int descriptor) {
  return Raised(Descriptor(descriptor), kHostChannel + 1);
}

struct Ends {
  Descriptor channel, hostChannel, output, hostOutput;
};

Ends MakeEnds() {
  std::array<int, 2> channel{-1, -1};
  std::array<int, 2> output{-1, -1};
  const bool made = socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channel.data()) == 0;
  const bool all = made && pipe2(output.data(), O_CLOEXEC) == 0;
  Ends ends{Descriptor(channel[0]), made ? OutOfTheWay(channel[1]) : Descriptor(), Descriptor(output[0]),
            all ? OutOfTheWay(output[1]) : Descriptor()};
  if (!all || !ends.hostChannel || !ends.hostOutput) {
    throw ModuleError(QStringLiteral("The process for the module cannot be started: %1.")
                          .arg(QString::fromLocal8Bit(std::strerror(errno))));
  }
  fcntl(ends.channel.Get(), F_SETFL, O_NONBLOCK);
  fcntl(ends.output.Get(), F_SETFL, O_NONBLOCK);
  return ends;
}

QString SignalName(int number) {
  const char* const name = sigabbrev_np(number);
  return name != nullptr ? QStringLiteral("SIG") + QString::fromLatin1(name) : QStringLiteral("signal %1").arg(number);
}

}  // namespace

QString EndSentence(const QString& module, const HostEnd& end) {
  if (!end.bySignal) {
    return QStringLiteral("The module %1 ended without an answer (exit status %2).").arg(module).arg(end.number);
  }
  return QStringLiteral("The module %1 crashed (%2).").arg(module, SignalName(end.number));
}

HostProcess::HostProcess(const QString& program, const QStringList& arguments) {
  Ends ends = MakeEnds();
  const SpawnPlan plan({{ends.hostOutput.Get(), STDOUT_FILENO},
                        {ends.hostOutput.Get(), STDERR_FILENO},
                        {ends.hostChannel.Get(), kHostChannel}});
  std::vector<std::string> words{program.toStdString()};
  for (const QString& argument : arguments) words.push_back(argument.toStdString());
  const int error = plan.Start(std::move(words), mark_.Environment(), process_);
  if (error != 0) {
    process_ = -1;
    throw ModuleError(QStringLiteral("The program %1, which calls modules, cannot be started: %2.")
                          .arg(program, QString::fromLocal8Bit(std::strerror(error))));
  }
  channel_ = std::move(ends.channel);
  output_ = std::move(ends.output);
  endWatch_ = ProcessDescriptor(process_);
}

HostProcess::~HostProcess() {
  if (process_ < 0) return;
  Kill();
  Reap(true);
}

std::optional<HostEnd> HostProcess::End() {
  if (!end_) Reap(false);
  return end_;
}

// A process that has ended keeps its number until it is reaped, so this reaches no stranger.
void HostProcess::Kill() {
  if (process_ < 0 || end_) return;
  kill(-process_, SIGKILL);
  kill(process_, SIGKILL);
}

void HostProcess::Reap(bool wait) {
  if (end_) return;
  siginfo_t info{};
  const auto process = static_cast<id_t>(process_);
  const int options = WEXITED | WNOWAIT | (wait ? 0 : WNOHANG);
  int result = 0;
  do {
    result = waitid(P_PID, process, &info, options);
  } while (result != 0 && errno == EINTR);
  if (result == 0 && info.si_pid == 0) return;
  Kill();
  mark_.KillMarked();
  waitid(P_PID, process, nullptr, WEXITED);
  end_ = HostEnd{result != 0 || info.si_code != CLD_EXITED, result != 0 ? SIGKILL : info.si_status};
}

}  // namespace quarl::plugins
