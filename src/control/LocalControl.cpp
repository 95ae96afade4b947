#include "control/LocalControl.h"

#include <signal.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <cerrno>

#include "control/ServiceLock.h"

// The header of glibc 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace quarl::control {
namespace {

constexpr qint64 kLongestStart = 15'000;  // milliseconds until a process that takes no lock counts as failed

}  // namespace

ServiceState LocalControl::State() {
  if (setup_.lockFile.isEmpty()) return ServiceState::NotInstalled;
  if (const auto holder = ServiceLock::Look(setup_.lockFile)) {
    started_ = 0;
    return holder->state;
  }
  if (StartsStill()) return ServiceState::StartPending;
  return QFileInfo(setup_.program).isExecutable() ? ServiceState::Stopped : ServiceState::NotInstalled;
}

bool LocalControl::Start() {
  if (setup_.lockFile.isEmpty() || Runs() || StartsStill()) return false;
  QProcess process;
  process.setProgram(setup_.program);
  process.setArguments({QStringLiteral("--foreground"), QStringLiteral("--messages-limit"), QStringLiteral("1024")});
  process.setWorkingDirectory(QStringLiteral("/"));
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(setup_.errorLog.isEmpty() ? QProcess::nullDevice() : setup_.errorLog);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QUARL_STORE"), setup_.store);
  environment.remove(QStringLiteral("NOTIFY_SOCKET"));
  process.setProcessEnvironment(environment);
  if (!process.startDetached(&started_)) {
    started_ = 0;
    return false;
  }
  sinceStart_.start();
  return true;
}

bool LocalControl::Stop() {
  const auto holder = ServiceLock::Look(setup_.lockFile);
  if (!holder || holder->pid <= 0) return false;
  const int process = pidfd_open(static_cast<pid_t>(holder->pid), 0);
  if (process < 0) return false;
  // The number may have passed to another process before it was opened.
  const auto again = ServiceLock::Look(setup_.lockFile);
  const bool same = again && again->pid == holder->pid;
  const bool sent = same && pidfd_send_signal(process, SIGTERM, nullptr, 0) == 0;
  close(process);
  return sent;
}

bool LocalControl::Runs() const {
  return ServiceLock::Look(setup_.lockFile).has_value();
}

bool LocalControl::StartsStill() {
  if (started_ == 0) return false;
  const bool alive = kill(static_cast<pid_t>(started_), 0) == 0;
  if (!alive || sinceStart_.elapsed() > kLongestStart) started_ = 0;
  return started_ != 0;
}

}  // namespace quarl::control
