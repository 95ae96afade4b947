#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTimer>

#include "plugins/ModuleWaitDialog.h"
#include "plugins/contract/HostedCalls.h"
#include "shell/MainFixture.h"
#include "support/VirtualDisplay.h"

// The main window, the module host and the bundled modules as they are installed, on an X server; the module's dialogs
// are another process's windows and are answered by keys.
namespace quarl::shell {
namespace {

const testing::VirtualDisplay display;

/// Sends keys to the window of a title as soon as it is there.
class KeysFor {
 public:
  KeysFor(const QString& title, const QStringList& keys) {
    // Without a window manager nobody else gives the window the focus. One that is about to close refuses it.
    const QString script =
        Q("for i in $(seq 200); do"
          "  w=$(xdotool search --onlyvisible --name \"$0\" 2>/dev/null | tail -n 1);"
          "  [ -n \"$w\" ] && sleep 0.2 && xdotool windowfocus --sync \"$w\" && xdotool key \"$@\" && exit 0;"
          "  sleep 0.05;"
          "done; exit 1");
    sender_.start(Q("bash"), QStringList{Q("-c"), script, title} + keys);
  }
  ~KeysFor() {
    // It may have ended within the event loop of the act.
    const bool ended = sender_.state() == QProcess::NotRunning || sender_.waitForFinished(20'000);
    EXPECT_TRUE(ended && sender_.exitCode() == 0) << "the window did not come";
  }
  KeysFor(const KeysFor&) = delete;
  KeysFor& operator=(const KeysFor&) = delete;

 private:
  QProcess sender_;
};

class RealModulesTest : public MainFixture {
 protected:
  RealModulesTest() {
    for (const char* module : {"ping", "tcpport"}) {
      EXPECT_TRUE(stores_.System().AddTestType(Q(QUARL_LAYOUT_DIR "/plugins/tests/%1.dll").arg(Q(module)), {}));
    }
    EXPECT_TRUE(stores_.System().AddAlertType(Q(QUARL_LAYOUT_DIR "/plugins/alerts/command.dll"), {}));
    server_ = stores_.Servers().AddServer(Q("web"), Q("127.0.0.1"), 0);
    test_ = stores_.Tests().AddTest(server_, 1, {});
    alert_ = stores_.Alerts().AddServerAlert(server_, 1, {});
    wait_.SetWindow(&Start(hosted_));
  }
  ~RealModulesTest() override { window_.reset(); }

  void SetUp() override {
    if (const std::string lack = display.Lack(); !lack.empty()) GTEST_SKIP() << lack;
  }
  /// Selects a node and chooses a command as its menu does.
  void Choose(NodeKind kind, qint32 id, const char* command) {
    ClickNode(NodeKey::Make(kind, id));
    MainFixture::Choose(command);
  }
  QString TestProperties() { return stores_.Tests().GetTestProperties(test_).value_or(Q("none")); }

  plugins::ModuleWaitDialog wait_{nullptr};
  plugins::HostedCalls hosted_{InstallPaths(Q(QUARL_LAYOUT_DIR)), wait_};
  qint32 server_ = 0;
  qint32 test_ = 0;
  qint32 alert_ = 0;
};

TEST_F(RealModulesTest, AConfirmedDialogStoresTheProperties) {
  int ticks = 0;
  QTimer painting;
  QObject::connect(&painting, &QTimer::timeout, [&] { ++ticks; });
  painting.start(10);
  {
    const KeysFor keys(Q("^Ping properties"), {Q("Return")});
    Choose(NodeKind::Test, test_, "mTestProperties");
  }
  EXPECT_GT(ticks, 10) << "the console stood still while the module's dialog was open";
  const QString stored = TestProperties();
  const QJsonObject properties = QJsonDocument::fromJson(stored.left(stored.indexOf(QChar::Null)).toUtf8()).object();
  EXPECT_EQ(properties[Q("module")].toString(), Q("ping")) << stored.toStdString();
  EXPECT_TRUE(stored.endsWith(QChar::Null)) << "the module's padding is stored but for one NUL";
  // Read and confirmed again, the same text stays.
  {
    const KeysFor keys(Q("^Ping properties"), {Q("Return")});
    Choose(NodeKind::Test, test_, "mTestProperties");
  }
  EXPECT_EQ(TestProperties(), stored);
}

TEST_F(RealModulesTest, ACancelledDialogStoresNothing) {
  const KeysFor keys(Q("^Ping properties"), {Q("Escape")});
  Choose(NodeKind::Test, test_, "mTestProperties");
  EXPECT_EQ(TestProperties(), QString());
}

TEST_F(RealModulesTest, AnAlertIsTriedThroughItsModule) {
  const QString told = folder_.filePath(Q("told"));
  ASSERT_TRUE(stores_.Alerts().SetAlertProperties(
      alert_, Q("{\"format\":1,\"module\":\"command\",\"values\":{\"program\":\"/bin/sh\",\"arguments\":[\"-c\","
                "\"echo $QUARL_SERVER >'%1'\"]}}")
                  .arg(told)));
  dialogs_.ExpectBox({Q("information"), Q("Info"), Q("Alert test successfull: ")});
  Choose(NodeKind::Alert, alert_, "mAlertTest");
  QFile file(told);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("web\n"));
}

}  // namespace
}  // namespace quarl::shell
