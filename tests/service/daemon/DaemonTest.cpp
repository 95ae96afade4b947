#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QFileInfo>
#include <string>

#include "service/daemon/DaemonRig.h"

namespace quarl {
namespace {

using test::DaemonRig;
using test::Delivered;

constexpr int kPassed = 1;
constexpr int kFailed = 3;

int StateOfTest(DaemonRig& rig) {
  return rig.Stores().Tests().GetTestsByServer(rig.idServer).Value("IDTestState").toInt();
}

/// The socket on which a service manager listens.
class NotifySocket {
 public:
  explicit NotifySocket(const QString& path) : path_(path.toStdString()) {
    socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    const timeval limit{10, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
  }
  ~NotifySocket() { close(socket_); }
  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;

  /// Whether a word comes among those that do.
  bool Hears(const std::string& word) const {
    char text[512];
    for (ssize_t count = 0; (count = recv(socket_, text, sizeof(text), 0)) > 0;) {
      if (std::string_view(text, static_cast<std::size_t>(count)).find(word) != std::string_view::npos) return true;
    }
    return false;
  }

 private:
  std::string path_;
  int socket_ = -1;
};

TEST(DaemonTest, ServesAStoreFromStartToStop) {
  DaemonRig rig;
  EXPECT_FALSE(rig.Check()) << "no service runs";
  ASSERT_TRUE(rig.Start());
  EXPECT_TRUE(rig.Check());
  EXPECT_EQ(StateOfTest(rig), kPassed);

  // By the lock, and where that is not there or not seen by the store itself.
  for (const bool lockThere : {true, false}) {
    ASSERT_TRUE(lockThere || QFile::remove(rig.File(QStringLiteral("q.db.service"))));
    QProcess second;
    second.start(rig.Program(), {QStringLiteral("--foreground"), QStringLiteral("--store"), rig.StoreText()});
    ASSERT_TRUE(second.waitForFinished());
    EXPECT_EQ(second.exitCode(), 1);
    const QByteArray said = second.readAllStandardError();
    EXPECT_TRUE(said.contains("process " + QByteArray::number(rig.Process().processId()))) << said.toStdString();
    EXPECT_EQ(said.count('\n'), 1) << said.toStdString();
  }

  EXPECT_EQ(rig.Stop(), 0);
  EXPECT_FALSE(rig.Stores().Service().Instance());
  EXPECT_FALSE(rig.Check());
}

TEST(DaemonTest, TellsEachChangeOnce) {
  DaemonRig rig;
  ASSERT_TRUE(rig.Start());
  for (const bool passed : {true, false, false, true, true, false}) {
    rig.Answer(passed);
    EXPECT_TRUE(rig.Check());
    EXPECT_EQ(StateOfTest(rig), passed ? kPassed : kFailed);
  }
  ASSERT_TRUE(rig.WaitForMessages(3));
  EXPECT_EQ(rig.Stop(), 0);
  const auto messages = rig.Messages();
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(messages[0].outage, messages[1].outage) << "problem and recovery belong together";
  EXPECT_NE(messages[1].outage, messages[2].outage);
  EXPECT_TRUE(messages[0].subject.startsWith(QStringLiteral("problem PROBLEM web")))
      << messages[0].subject.toStdString();
  EXPECT_TRUE(messages[1].subject.startsWith(QStringLiteral("recovery "))) << messages[1].subject.toStdString();
}

TEST(DaemonTest, SpeaksWithTheServiceManager) {
  DaemonRig rig;
  const QString path = rig.File(QStringLiteral("notify"));
  const NotifySocket manager(path);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("NOTIFY_SOCKET"), path);
  environment.insert(QStringLiteral("WATCHDOG_USEC"), QStringLiteral("300000"));
  ASSERT_TRUE(rig.Start(environment));
  EXPECT_TRUE(manager.Hears("READY=1"));
  EXPECT_TRUE(manager.Hears("WATCHDOG=1"));
  rig.Process().terminate();
  EXPECT_TRUE(manager.Hears("STOPPING=1"));
  EXPECT_TRUE(rig.Process().waitForFinished());
}

TEST(DaemonTest, FinishesRunningChecksBeforeItEnds) {
  DaemonRig rig;
  const QString begun = rig.File(QStringLiteral("begun"));
  ASSERT_TRUE(rig.Stores().Tests().SetTestProperties(rig.idTest, QStringLiteral("linger ") + begun));
  ASSERT_TRUE(rig.Start());
  bool asked = false;
  EXPECT_TRUE(rig.Check([&] {
    if (!asked && QFileInfo::exists(begun)) {
      rig.Process().terminate();
      asked = true;
    }
  }));
  EXPECT_TRUE(rig.Process().waitForFinished());
  EXPECT_EQ(rig.Process().exitCode(), 0);
  EXPECT_EQ(StateOfTest(rig), kPassed);
}

TEST(DaemonTest, TakesUpChangesOfTheConfigurationWhileItRuns) {
  DaemonRig rig;
  ASSERT_TRUE(rig.Start());
  ASSERT_TRUE(rig.Check());
  const qint32 added = rig.Stores().Tests().AddTest(rig.idServer, 1, QStringLiteral("fail"));
  ASSERT_TRUE(rig.Stores().Tests().RemoveTest(rig.idTest));
  EXPECT_TRUE(rig.Check());
  const auto rows = rig.Stores().Tests().GetTestsByServer(rig.idServer);
  EXPECT_EQ(rows.RowCount(), 1U);
  EXPECT_EQ(rows.Value("IDTest").toInt(), added);
  EXPECT_EQ(rows.Value("IDTestState").toInt(), kFailed);
}

struct BadStart {
  const char* store;
  QStringList arguments;
  int code;
};

TEST(DaemonTest, RefusesWhatItCannotServe) {
  QTemporaryDir folder;
  QFile rubbish(folder.filePath(QStringLiteral("rubbish.db")));
  ASSERT_TRUE(rubbish.open(QIODevice::WriteOnly));
  rubbish.write(QByteArray(8192, 'x'));
  rubbish.close();
  for (const BadStart& start : {BadStart{"sqlite:%1/rubbish.db", {}, 1},
                                {"sqlite:%1/missing/q.db", {}, 1},
                                {"mysql://x", {}, 1},
                                {"sqlite:%1/q.db", {QStringLiteral("--check-limit"), QStringLiteral("0")}, 2}}) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QUARL_STORE"),
                       QString::fromLatin1(start.store).replace(QStringLiteral("%1"), folder.path()));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QUARL_LAYOUT_DIR "/quarld"), start.arguments);
    ASSERT_TRUE(process.waitForFinished()) << start.store;
    EXPECT_EQ(process.exitCode(), start.code) << start.store;
    EXPECT_FALSE(process.readAllStandardError().isEmpty()) << start.store;
  }
}

}  // namespace
}  // namespace quarl
