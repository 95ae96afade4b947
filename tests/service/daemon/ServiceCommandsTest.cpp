#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <tuple>

#include "service/daemon/DaemonRig.h"

namespace quarl {
namespace {

using test::DaemonRig;

struct CommandCase {
  const char* words;  // of quarlctl, separated by blanks
  int code;
  const char* says;  // part of its first line, or of its complaint
};

class ServiceCommandsTest : public ::testing::Test {
 protected:
  ~ServiceCommandsTest() override { std::ignore = Run(QStringLiteral("stop")); }

  int Run(const QString& words) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(rig_.File(QStringLiteral("app/quarlctl")),
                  QStringList{QStringLiteral("--store"), rig_.StoreText()} + words.split(u' '));
    EXPECT_TRUE(process.waitForFinished(60'000));
    said_ = process.readAll();
    return process.exitCode();
  }
  void Expect(const CommandCase& each) {
    EXPECT_EQ(Run(QLatin1String(each.words)), each.code) << each.words << '\n' << said_.toStdString();
    EXPECT_TRUE(said_.contains(each.says)) << each.words << '\n' << said_.toStdString();
  }

  DaemonRig rig_;
  QByteArray said_;
};

TEST_F(ServiceCommandsTest, FollowTheRealServiceFromStartToStop) {
  for (const CommandCase& each : {CommandCase{"status", 1, "Service: stopped"},
                                  {"check web", 3, "UNKNOWN - The tests were not run"},
                                  {"check --last web", 3, "UNKNOWN - web: 0 passed, 0 failed, 1 unknown"},
                                  {"stop", 0, "The service is stopped."},
                                  {"start", 0, "The service runs."},
                                  {"start", 0, "The service runs already."},
                                  {"status", 0, "Service: running\n  process "},
                                  {"check web", 0, "OK - web: 1 passed, 0 failed"},
                                  {"check nobody", 3, "UNKNOWN - There is no server or group"},
                                  {"check", 3, "NAME"}}) {
    Expect(each);
  }
  rig_.Answer(false);
  for (const CommandCase& each : {CommandCase{"check #1", 2, "CRITICAL - #1: 0 passed, 1 failed"},
                                  {"check --last *", 2, "\nweb, Moody: the file says no\n"},
                                  {"status", 0, "Servers: 0 passed, 1 failed, 0 unknown"},
                                  {"set log-retention 1", 0, "log-retention = 1\n"}}) {
    Expect(each);
  }
  // The running service keeps to the new number.
  for (const bool passed : {true, false}) {
    rig_.Answer(passed);
    Expect({"check web", passed ? 0 : 2, "web: "});
    EXPECT_EQ(rig_.Stores().Log().GetLogs().RowCount(), 1U);
  }
  for (const CommandCase& each : {CommandCase{"set log-retention", 0, "log-retention = 1\n"},
                                  {"set log-retention 0", 1, "0 is out of range"},
                                  {"set log-retention x", 2, "quarlctl: "},
                                  {"set colour 1", 2, "quarlctl: "},
                                  {"stop", 0, "The service is stopped."},
                                  {"status", 1, "Service: stopped"}}) {
    Expect(each);
  }
}

TEST_F(ServiceCommandsTest, AServiceThatCannotStartIsToldWithoutALongWait) {
  ASSERT_TRUE(QFile::remove(rig_.Program()));
  ASSERT_TRUE(QFile::link(QStringLiteral("/bin/false"), rig_.Program()));
  QElapsedTimer elapsed;
  elapsed.start();
  Expect({"start", 1, "The service did not start"});
  EXPECT_LT(elapsed.elapsed(), 10'000) << "it waits for a process that has ended";
  ASSERT_TRUE(QFile::remove(rig_.Program()));
  Expect({"start", 1, "No service is installed"});
  Expect({"status", 1, "Service: not installed"});
}

TEST_F(ServiceCommandsTest, TheFileOfMessagesStaysBounded) {
  QProcess process;
  const QString messages = rig_.File(QStringLiteral("messages.log"));
  QFile file(messages);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(QByteArray(2048, 'x'));
  file.close();
  process.setStandardErrorFile(messages, QIODevice::Append);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QUARL_STORE"), QStringLiteral("sqlite:/missing/q.db"));
  process.setProcessEnvironment(environment);
  for (const char* limit : {"0", "1"}) {
    process.start(rig_.Program(),
                  {QStringLiteral("--foreground"), QStringLiteral("--messages-limit"), QLatin1String(limit)});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 1);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    file.close();
    EXPECT_EQ(text.size() < 1024, *limit == '1') << text.size();
    EXPECT_TRUE(text.contains("quarld: The store /missing/q.db cannot be made")) << text.toStdString();
    EXPECT_EQ(text.startsWith("quarld: Earlier messages were removed.\n"), *limit == '1') << text.toStdString();
  }
}

}  // namespace
}  // namespace quarl
