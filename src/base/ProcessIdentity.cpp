#include "base/ProcessIdentity.h"

#include <signal.h>
#include <unistd.h>

#include <QFile>
#include <QSysInfo>
#include <cerrno>
#include <optional>

namespace quarl {
namespace {

QString FirstLine(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readLine(200)).trimmed() : QString();
}

bool IsHidden(qint64 pid) {
  return pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

/// The 22nd field of the process's status line; the second one, its name, may hold blanks and brackets. 0: it has
/// ended. Nothing: no such process, or one that the system hides.
std::optional<qint64> StartOf(qint64 pid) {
  QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
  if (pid < 1 || !file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray line = file.read(4096);
  const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
  constexpr int kState = 0;
  constexpr int kStart = 19;
  if (fields.size() <= kStart || fields[kState] == "Z" || fields[kState] == "X") return 0;
  return fields[kStart].toLongLong();
}

}  // namespace

ProcessIdentity ProcessIdentity::Of(qint64 pid) {
  return {.host = QSysInfo::machineHostName(),
          .machine = FirstLine(QStringLiteral("/etc/machine-id")),
          .boot = FirstLine(QStringLiteral("/proc/sys/kernel/random/boot_id")),
          .scope = QFile::symLinkTarget(QStringLiteral("/proc/self/ns/pid")).section(u'/', -1),
          .pid = pid,
          .startTicks = StartOf(pid).value_or(0)};
}

ProcessIdentity ProcessIdentity::Current() {
  return Of(::getpid());
}

bool ProcessIdentity::IsGone() const {
  const ProcessIdentity now = Of(pid);
  if (boot.isEmpty() || scope.isEmpty()) return false;
  if (boot == now.boot) {
    if (scope != now.scope) return false;
    return startTicks != now.startTicks && (now.startTicks != 0 || StartOf(pid) || !IsHidden(pid));
  }
  return !machine.isEmpty() && machine == now.machine && host == now.host;
}

}  // namespace quarl
