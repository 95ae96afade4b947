#include "netscan/api/Street.h"

#include <sys/prctl.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>
#include <csignal>

namespace quarl::netscan {
namespace {

constexpr int kAwaitMs = 60000;
constexpr int kListens = 0x0A, kUnconnected = 0x07;

// Arguments of unshare: a /run and processes of the program's own.
const QStringList kOwnSpaces{Q("--mount"),
                             Q("--pid"),
                             Q("--fork"),
                             Q("--kill-child"),
                             Q("sh"),
                             Q("-c"),
                             Q("mount -t tmpfs none /run && mkdir /run/sshd /run/samba && exec \"$0\" \"$@\"")};

}  // namespace

Street::Street() {
  street_.Batch("link add name link type bridge\nlink set dev link up\n");
  near_.Batch("link set lo up\nlink add cable type veth peer name near netns " + street_.Path() +
              "\naddr add 10.88.0.1/24 brd + dev cable\nlink set cable up\n");
  street_.Batch("link set dev near master link up\n");
  if (!Missing().isEmpty()) return;
  const auto tried = near_.Run(TestUser::Root, Q("unshare"), kOwnSpaces + QStringList(Q("true")));
  if (tried.exitCode != 0) missing_ = Q("unshare: ") + tried.errors;
}

// The programs run in process namespaces of their own, so that all that they have started ends with them.
Street::~Street() {
  for (const auto& program : programs_) program->kill();
  for (const auto& program : programs_) program->waitForFinished();
}

QString Street::Missing() const {
  QStringList reasons{missing_, near_.Missing(), street_.Missing()};
  for (const auto& host : hosts_) reasons += host->Missing();
  reasons.removeAll(QString());
  return reasons.value(0);
}

NetSpace& Street::AddHost(int number) {
  NetSpace& host = *hosts_.emplace_back(std::make_unique<NetSpace>());
  const QByteArray id = QByteArray::number(number);
  host.Batch("link set lo up\nlink add cable type veth peer name host" + id + " netns " + street_.Path() +
             "\naddr add 10.88.0." + id + "/24 brd + dev cable\nlink set cable up\n");
  street_.Batch("link set dev host" + id + " master link up\n");
  return host;
}

QString Street::NewFolder() {
  const QString path = folder_.filePath(QString::number(++folders_));
  QDir().mkpath(path);
  return path;
}

QProcess& Street::Start(NetSpace& host, const QString& program, const QStringList& arguments) {
  QProcess& process = *programs_.emplace_back(std::make_unique<QProcess>());
  const QString found = QStandardPaths::findExecutable(program, Words("/usr/sbin /usr/bin"));
  if (found.isEmpty() && missing_.isEmpty()) missing_ = program + Q(" is not installed");
  if (!Missing().isEmpty()) return process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.setChildProcessModifier([&host] {
    host.Enter();
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that breaks down leaves nothing behind
  });
  process.start(Q("unshare"), kOwnSpaces + QStringList(found) + arguments);
  process.waitForStarted();
  return process;
}

template <typename Condition>
void Street::Await(QProcess* program, const QString& what, Condition condition) {
  QElapsedTimer timer;
  timer.start();
  while (Missing().isEmpty() && failure_.isEmpty() && !condition()) {
    if (program != nullptr && program->state() == QProcess::NotRunning)
      failure_ = program->arguments().join(QLatin1Char(' ')) + Q(" ended: ") + QString::fromUtf8(program->readAll());
    else if (timer.elapsed() > kAwaitMs)
      failure_ = Q("in vain waited for ") + what;
    else if (program == nullptr || !program->waitForReadyRead(20))
      QThread::msleep(10);
  }
}

void Street::AwaitPort(QProcess& program, const char* protocol, int port) {
  const QString table = Q("/proc/%1/net/%2").arg(program.processId()).arg(QLatin1String(protocol));
  const int state = qstrcmp(protocol, "tcp") == 0 ? kListens : kUnconnected;
  const QByteArray entry = Q(":%1 00000000:0000 %2 ")
                               .arg(port, 4, 16, QLatin1Char('0'))
                               .arg(state, 2, 16, QLatin1Char('0'))
                               .toUpper()
                               .toLatin1();
  Await(&program, table + QString::fromLatin1(entry), [&] {
    QFile file(table);
    return file.open(QIODevice::ReadOnly) && file.readAll().contains(entry);
  });
}

void Street::AwaitWords(QProcess& program, const QByteArray& words) {
  QByteArray said;
  Await(&program, QString::fromUtf8(words), [&] { return (said += program.readAll()).contains(words); });
}

void Street::AwaitCommand(const QStringList& command, const QByteArray& words) {
  Await(nullptr, command.join(QLatin1Char(' ')), [&] {
    const auto outcome = near_.Run(TestUser::Root, command.first(), command.mid(1));
    return outcome.output.join(QLatin1Char('\n')).toUtf8().contains(words);
  });
}

}  // namespace quarl::netscan
