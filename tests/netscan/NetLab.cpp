#include "netscan/NetLab.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <cerrno>
#include <cstring>

namespace quarl::netscan {
namespace {

constexpr uid_t kNobody = 65534;

int OpenSpace() {
  return open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
}

void Become(NetLab::User user) {
  if (user == NetLab::User::Root) return;
  if (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
      setresuid(kNobody, kNobody, kNobody) != 0)
    _exit(126);
  if (user == NetLab::User::NobodyConfined) prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
}

}  // namespace

NetLab::NetLab() {
  if (geteuid() != 0) {
    missing_ = QStringLiteral("network namespaces and other users need root");
    return;
  }
  own_ = OpenSpace();
  for (int* space : {&near_, &far_}) {
    if (unshare(CLONE_NEWNET) != 0) {
      missing_ = QStringLiteral("no network namespace: ") + QString::fromLocal8Bit(std::strerror(errno));
      break;
    }
    *space = OpenSpace();
  }
  setns(own_, CLONE_NEWNET);
  if (missing_.isEmpty()) Build();
}

NetLab::~NetLab() {
  for (const int space : {own_, near_, far_})
    if (space >= 0) close(space);
}

void NetLab::Build() {
  QFile::setPermissions(programs_.path(), QFile::Permissions(0x7755));
  const QByteArray farPath = "/proc/" + QByteArray::number(getpid()) + "/fd/" + QByteArray::number(far_);
  Batch(near_, ("link add cable type veth peer name cable netns " + farPath + "\n").constData());
  Batch(near_,
        "link set lo up\naddr add 10.77.0.1/24 brd + dev cable\nlink set cable up\n"
        "route add 10.77.0.0/16 via 10.77.0.2\n");
  Batch(far_,
        "link set lo up\naddr add 10.77.0.2/24 dev cable\nlink set cable up\n"
        "route add blackhole 10.77.1.0/24\nroute add unreachable 10.77.2.0/24\nroute add prohibit 10.77.4.0/24\n"
        "route add 10.77.5.0/24 via 10.77.0.9\n");
  if (!missing_.isEmpty()) return;
  Set(Side::Near, "ip_default_ttl", "1");
  Set(Side::Far, "ip_forward", "1");
  Set(Side::Far, "icmp_ratelimit", "0");
  AwaitCable();
}

// A cable carries its first packets some time after both ends are up. Nobody listens on far, so a connection is refused
// as soon as packets go both ways.
void NetLab::AwaitCable() {
  setns(near_, CLONE_NEWNET);
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  setns(own_, CLONE_NEWNET);
  const timeval limit{30, 0};
  setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  sockaddr_in far{};
  far.sin_family = AF_INET;
  far.sin_port = htons(9);
  far.sin_addr.s_addr = inet_addr("10.77.0.2");
  if (connect(connection, reinterpret_cast<const sockaddr*>(&far), sizeof far) != -1 || errno != ECONNREFUSED)
    missing_ = QStringLiteral("the cable between the namespaces carries nothing");
  close(connection);
}

void NetLab::Batch(int space, const char* commands) {
  if (!missing_.isEmpty()) return;
  QProcess ip;
  ip.setChildProcessModifier([space] { setns(space, CLONE_NEWNET); });
  ip.start(QStringLiteral("ip"), {QStringLiteral("-batch"), QStringLiteral("-")});
  ip.write(commands);
  ip.closeWriteChannel();
  if (!ip.waitForFinished() || ip.exitCode() != 0)
    missing_ = QStringLiteral("ip: ") + ip.errorString() + QString::fromLocal8Bit(ip.readAllStandardError());
}

void NetLab::Set(Side side, const char* name, const char* value) {
  setns(SpaceOf(side), CLONE_NEWNET);
  QFile file(QStringLiteral("/proc/sys/net/ipv4/") + QString::fromLatin1(name));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(value) < 0)
    missing_ = file.fileName() + QStringLiteral(": ") + file.errorString();
  file.close();
  setns(own_, CLONE_NEWNET);
}

NetLab::Outcome NetLab::Run(User user, const QString& program, const QStringList& arguments, const QByteArray& input) {
  QProcess process;
  process.setChildProcessModifier([this, user] {
    setns(near_, CLONE_NEWNET);
    Become(user);
  });
  process.start(program, arguments);
  process.write(input);
  process.closeWriteChannel();
  process.waitForFinished();
  Outcome outcome;
  if (process.exitStatus() == QProcess::NormalExit) outcome.exitCode = process.exitCode();
  outcome.output = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
  outcome.errors = QString::fromUtf8(process.readAllStandardError());
  return outcome;
}

QString NetLab::Install(const QString& program, const QString& name, bool withCapability) {
  const QString path = programs_.filePath(name);
  QFile::copy(program, path);
  QFile::setPermissions(path, QFile::Permissions(0x7755));
  if (!withCapability) return path;
  struct statvfs system {};
  statvfs(QFile::encodeName(path).constData(), &system);
  const Outcome set = Run(User::Root, QStringLiteral("setcap"), {QStringLiteral("cap_net_raw+ep"), path});
  if (set.exitCode == 0 && (system.f_flag & ST_NOSUID) == 0) return path;
  missing_ = QStringLiteral("no file capabilities in ") + programs_.path() + QStringLiteral(": ") +
             (set.exitCode == 0 ? QStringLiteral("mounted nosuid") : QStringLiteral("setcap: ") + set.errors);
  return {};
}

}  // namespace quarl::netscan
