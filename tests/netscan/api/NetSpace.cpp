#include "netscan/api/NetSpace.h"

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <cerrno>
#include <cstring>
#include <functional>

namespace quarl::netscan {
namespace {

constexpr uid_t kNobody = 65534;
constexpr int kLongestRunMs = 60000;

int OpenSpace() {
  return open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
}

// Does something in another namespace and comes back.
void Elsewhere(const std::function<void()>& act) {
  const int own = OpenSpace();
  act();
  setns(own, CLONE_NEWNET);
  close(own);
}

}  // namespace

void BecomeUser(TestUser user) {
  if (user == TestUser::Root) return;
  if (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
      setresuid(kNobody, kNobody, kNobody) != 0)
    _exit(126);
  if (user == TestUser::NobodyConfined) prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
}

QString InstallProgram(const QString& program, const QString& folder, const QString& name) {
  const QString path = folder + QLatin1Char('/') + name;
  QFile::copy(program, path);
  for (const QString& open : {folder, path}) QFile::setPermissions(open, QFile::Permissions(0x7755));
  return path;
}

QString GiveCapability(const QString& program) {
  struct statvfs system {};
  statvfs(QFile::encodeName(program).constData(), &system);
  if ((system.f_flag & ST_NOSUID) != 0) return program + Q(": mounted nosuid");
  QProcess setcap;
  setcap.start(Q("setcap"), {Q("cap_net_raw+ep"), program});
  if (setcap.waitForFinished() && setcap.exitCode() == 0) return {};
  return Q("setcap: ") + setcap.errorString() + QString::fromUtf8(setcap.readAllStandardError());
}

NetSpace::NetSpace() {
  if (geteuid() != 0) {
    missing_ = Q("network namespaces and other users need root");
    return;
  }
  Elsewhere([this] {
    if (unshare(CLONE_NEWNET) == 0)
      descriptor_ = OpenSpace();
    else
      missing_ = Q("no network namespace: ") + QString::fromLocal8Bit(std::strerror(errno));
  });
}

NetSpace::~NetSpace() {
  if (descriptor_ >= 0) close(descriptor_);
}

void NetSpace::Enter() const {
  setns(descriptor_, CLONE_NEWNET);
}

QByteArray NetSpace::Path() const {
  return "/proc/" + QByteArray::number(getpid()) + "/fd/" + QByteArray::number(descriptor_);
}

void NetSpace::Batch(const QByteArray& commands) {
  if (!missing_.isEmpty()) return;
  QProcess ip;
  ip.setChildProcessModifier([this] { Enter(); });
  ip.start(Q("ip"), Words("-batch -"));
  ip.write(commands);
  ip.closeWriteChannel();
  if (!ip.waitForFinished() || ip.exitCode() != 0)
    missing_ = Q("ip: ") + ip.errorString() + QString::fromLocal8Bit(ip.readAllStandardError());
}

NetSpace::Outcome NetSpace::Run(TestUser user, const QString& program, const QStringList& arguments,
                                const QByteArray& input) const {
  QProcess process;
  process.setChildProcessModifier([this, user] {
    Enter();
    BecomeUser(user);
  });
  process.start(program, arguments);
  process.write(input);
  process.closeWriteChannel();
  process.waitForFinished(kLongestRunMs);
  Outcome outcome;
  if (process.exitStatus() == QProcess::NormalExit) outcome.exitCode = process.exitCode();
  outcome.output = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
  outcome.errors = QString::fromUtf8(process.readAllStandardError());
  return outcome;
}

void NetSpace::Set(const char* name, const char* value) {
  if (!missing_.isEmpty()) return;
  Elsewhere([&] {
    Enter();
    QFile file(Q("/proc/sys/net/ipv4/") + QString::fromLatin1(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(value) < 0)
      missing_ = file.fileName() + Q(": ") + file.errorString();
  });
}

}  // namespace quarl::netscan
