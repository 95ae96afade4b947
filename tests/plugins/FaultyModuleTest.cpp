#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <csignal>

#include "plugins/HostFolder.h"
#include "plugins/contract/HostedCalls.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

using namespace std::chrono_literals;

// The header of the library's own function cannot be used from C++ on Debian 12.
int OpenProcess(pid_t process) {
  return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

bool EndsSoon(pid_t process) {
  const int watch = OpenProcess(process);
  if (watch < 0) return errno == ESRCH;
  pollfd wanted{watch, POLLIN, 0};
  const bool ended = poll(&wanted, 1, 10000) > 0;
  close(watch);
  return ended;
}

class FaultyModuleTest : public testing::Test {
 protected:
  /// The sentence of the failure, "" when the call came back with a result.
  QString Fault(const char* module, const QString& command, HostLimits limits = {20s, 20s}) {
    HostedCalls calls(folder_.Paths(), wait_, limits);
    QString path = folder_.Module(module);
    QString name = command;
    QString address = address_;
    properties_ = QString(20, QChar(u'\0'));
    try {
      calls.SetProperties(ModuleKind::Test, path, name, address, properties_);
      return {};
    } catch (const ModuleError& error) {
      EXPECT_EQ(properties_, QString(20, QChar(u'\0')));
      return error.Description();
    }
  }

  HostFolder folder_;
  PlainWait wait_;
  QString address_ = QStringLiteral("10.0.0.1");
  QString properties_;
};

TEST_F(FaultyModuleTest, WhatAModuleDoesToItsProcessBecomesASentence) {
  const QString overrun = QStringLiteral("The module probe.dll wrote past the end of a text and was ended.");
  const QString nonsense = QStringLiteral("The module probe.dll answered with what cannot be understood.");
  const struct {
    const char* command;
    QString sentence;
  } rows[] = {
      {"crash", QStringLiteral("The module probe.dll crashed (SIGSEGV).")},
      {"raise", QStringLiteral("The module probe.dll crashed (SIGSEGV).")},
      {"stack", QStringLiteral("The module probe.dll crashed (SIGSEGV).")},
      {"abort", QStringLiteral("The module probe.dll crashed (SIGABRT).")},
      {"exit", QStringLiteral("The module probe.dll ended without an answer (exit status 0).")},
      {"exit 7", QStringLiteral("The module probe.dll ended without an answer (exit status 7).")},
      {"overrun 0", overrun},
      {"overrun 1", overrun},
      {"overrun 2", overrun},
      {"not UTF-8", QStringLiteral("The module probe.dll left a text that is not UTF-8.")},
      {"garbage", nonsense},
      {"long frame", nonsense},
      {"print", QString()},
      {"log", QString()},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Fault("probe.dll", QString::fromLatin1(row.command)).toStdString(), row.sentence.toStdString())
        << row.command;
  }
}

TEST_F(FaultyModuleTest, WhatIsNoGoodModuleIsNamed) {
  QFile good(QStringLiteral(QUARL_PROBES_DIR "/probe.dll"));
  ASSERT_TRUE(good.open(QIODevice::ReadOnly));
  const QByteArray bytes = good.readAll();
  folder_.WriteModule("cut.dll", bytes.left(bytes.size() / 2));
  folder_.WriteModule("head.dll", bytes.left(100));
  folder_.WriteModule("empty.dll", {});
  folder_.WriteModule("text.dll", "This is no library.");
  const struct {
    const char *module, *sentence;
  } rows[] = {
      {"cut.dll", "The module cut.dll crashed (SIGBUS). The module is cut short: "},
      {"head.dll", "The module head.dll cannot be loaded: "},
      {"empty.dll", "The module empty.dll cannot be loaded: "},
      {"text.dll", "The module text.dll cannot be loaded: "},
      {"probe_plain.dll", "The file probe_plain.dll is no Quarl module: it lacks the function QuarlModuleAbi."},
      {"probe_identity.dll", "The module probe_identity.dll lacks the function QuarlSetProperties."},
      {"probe_abi.dll", "The module probe_abi.dll was built for interface number 77; "},
      {"probe_alert.dll", "The module probe_alert.dll is an alert module, but a test module is wanted."},
      {"probe_start.dll", "The module probe_start.dll could not start (result 5)."},
      {"probe_constructor.dll", "The module probe_constructor.dll crashed (SIGILL)."},
  };
  for (const auto& row : rows) {
    const QString sentence = Fault(row.module, QStringLiteral("nothing"));
    EXPECT_TRUE(sentence.startsWith(QString::fromLatin1(row.sentence))) << sentence.toStdString();
  }
}

TEST_F(FaultyModuleTest, EveryTextOfAnAlertEndsAtForbiddenMemory) {
  HostedCalls calls(folder_.Paths(), wait_);
  for (int text = 0; text < 7; ++text) {
    QString path = folder_.Module("probe_alert.dll");
    QString name = QStringLiteral("overrun %1").arg(text);
    QString others[5] = {QString(), QStringLiteral("s"), QString(4095, u'm'), QString(4096, u'p'), QString(255, u' ')};
    const auto call = [&] { return calls.Alert(path, name, others[0], others[1], others[2], others[3], others[4]); };
    if (text < 6) {
      EXPECT_THROW(call(), ModuleError) << text;
    } else {
      EXPECT_EQ(call(), 4);
    }
  }
}

TEST_F(FaultyModuleTest, AModuleThatHangsIsEndedAtTheLimit) {
  const HostLimits brief{100ms, 100ms};
  const QString sentence = QStringLiteral("The module probe.dll did not answer within 0.1 seconds.");
  EXPECT_EQ(Fault("probe.dll", QStringLiteral("hang"), brief), sentence);
  EXPECT_EQ(Fault("probe.dll", QStringLiteral("hang after window"), {500ms, 500ms}),
            QStringLiteral("The module probe.dll did not answer within 0.5 seconds."));
}

TEST_F(FaultyModuleTest, AnAnswerNeverLandsInAFileOfTheModule) {
  address_ = folder_.Path(QStringLiteral("opened"));
  EXPECT_EQ(Fault("probe.dll", QStringLiteral("close")),
            QStringLiteral("The module probe.dll ended without an answer (exit status 70)."));
  EXPECT_TRUE(QFile::exists(address_));
  EXPECT_EQ(QFile(address_).size(), 0);
}

TEST_F(FaultyModuleTest, AChildOfTheModuleNeitherDelaysTheAnswerNorOutlivesTheCall) {
  for (const char* command : {"child", "child session"}) {
    EXPECT_EQ(Fault("probe.dll", QString::fromLatin1(command)), QString());
    const pid_t child = properties_.left(properties_.indexOf(QChar(u'\0'))).toInt();
    ASSERT_GT(child, 1);
    EXPECT_TRUE(EndsSoon(child)) << command;
  }
}

TEST_F(FaultyModuleTest, TheHostEndsWithTheProgramThatStartedIt) {
  address_ = folder_.MakePipe();
  const pid_t starter = fork();
  if (starter == 0) {
    Fault("probe.dll", QStringLiteral("tell and hang"), {1h, 1h});
    _exit(0);
  }
  QFile pipe(address_);
  ASSERT_TRUE(pipe.open(QIODevice::ReadOnly));
  const pid_t host = pipe.readLine().trimmed().toInt();
  ASSERT_GT(host, 1);
  const int watch = OpenProcess(host);
  ASSERT_GE(watch, 0);
  close(watch);
  kill(starter, SIGKILL);
  waitpid(starter, nullptr, 0);
  EXPECT_TRUE(EndsSoon(host));
}

TEST_F(FaultyModuleTest, NoCoreFileCanBeWritten) {
  EXPECT_EQ(Fault("probe.dll", QStringLiteral("core limit")), QString());
  EXPECT_EQ(properties_.left(3), QStringLiteral("1 1"));
}

}  // namespace
}  // namespace quarl::plugins
