#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include "netscan/api/NetLab.h"

namespace quarl::netscan {
namespace {

const QString kHelper = Q(QUARL_LAYOUT_DIR "/quarl-echo");

class EchoServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!lab.Missing().isEmpty()) GTEST_SKIP() << lab.Missing().toStdString();
  }
  NetLab::Outcome Serve(const QByteArray& input, const QStringList& arguments = {}) {
    return lab.Run(NetLab::User::Root, kHelper, arguments, input);
  }
  NetLab lab;
};

TEST_F(EchoServerTest, HostileInputEndsItWithoutAnEcho) {
  const QByteArray cases[] = {
      "\n",
      "hello\n",
      "1\n",
      "127.0.0.1\n",
      "1 127.0.0.1 5\n",
      "1 127.0.0.1 \n",
      "1  127.0.0.1\n",
      "01 127.0.0.1\n",
      "+1 127.0.0.1\n",
      "-1 127.0.0.1\n",
      "65536 127.0.0.1\n",
      "1 127.0.0.256\n",
      "1 127.1\n",
      "1 127.0.0.1\r\n",
      QByteArray("1 127.0.0.1\0\n", 13),
      "1 localhost\n",
      QByteArray(28, '1'),
      QByteArray(1 << 20, 'x'),
      QByteArray(5000, '\0'),
  };
  for (const QByteArray& input : cases) {
    const auto outcome = Serve(input);
    EXPECT_EQ(outcome.exitCode, 2) << input.left(40).toPercentEncoding().constData();
    EXPECT_EQ(outcome.output, QStringList(Q("ready")));
  }
  EXPECT_EQ(Serve({}).exitCode, 0);
  EXPECT_EQ(Serve({}, {Q("127.0.0.1")}).exitCode, 2);
}

TEST_F(EchoServerTest, ItsSocketNeverStandsInForAStandardDescriptor) {
  const auto outcome = lab.Run(NetLab::User::Root, Q("sh"), {Q("-c"), Q("exec \"$0\" <&-"), kHelper});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_TRUE(outcome.output.isEmpty());
}

TEST_F(EchoServerTest, ServesSlowlyWithoutPrivileges) {
  // Started here and not in the laboratory: loopback exists everywhere.
  QProcess helper;
  helper.start(kHelper, QStringList());
  ASSERT_TRUE(helper.waitForReadyRead());
  ASSERT_EQ(helper.readLine(), "ready\n");
  QFile status(Q("/proc/%1/status").arg(helper.processId()));
  ASSERT_TRUE(status.open(QIODevice::ReadOnly));
  const QByteArray text = status.readAll();
  for (const char* line : {"CapPrm:\t0000000000000000\n", "CapEff:\t0000000000000000\n", "NoNewPrivs:\t1\n"})
    EXPECT_TRUE(text.contains(line)) << line;

  constexpr int kRequests = 254 + 150;  // the window, and 150 echoes that may leave every 2 ms
  QElapsedTimer timer;
  timer.start();
  for (int sequence = 0; sequence < kRequests; ++sequence) helper.write(QByteArray::number(sequence) + " 127.0.0.1\n");
  QByteArray answers;
  while (answers.count('\n') < kRequests && helper.waitForReadyRead(10000)) answers += helper.readAllStandardOutput();
  EXPECT_EQ(answers.count(" 127.0.0.1 0\n"), kRequests);
  EXPECT_GE(timer.elapsed(), 298);
  helper.closeWriteChannel();
  EXPECT_TRUE(helper.waitForFinished());
  EXPECT_EQ(helper.exitCode(), 0);
}

}  // namespace
}  // namespace quarl::netscan
