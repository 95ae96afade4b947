#include <QDialog>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include "base/Clock.h"
#include "shell/MainFixture.h"
#include "ui/PaintingPause.h"

namespace quarl::shell {
namespace {

class ServiceMonitorTest : public MainFixture {
 protected:
  void Tick() { MainFixture::Tick("ServiceTimer"); }
  QString Panel() { return Window().findChild<QLabel*>(Q("KVCStatusBar_Panel1"))->text(); }
  bool Enabled(const char* button) { return Action(Q(button))->isEnabled(); }
};

TEST_F(ServiceMonitorTest, PanelAndButtonsFollowTheState) {
  Start();
  EXPECT_EQ(Panel(), QString()) << "nothing is asked before the first tick";
  // A state, its text, and whether the service can be started and stopped.
  const std::tuple<int, const char*, bool, bool> cases[] = {{-1, "Quarl service is not installed", false, false},
                                                            {1, "Quarl service is stopped", true, false},
                                                            {2, "Quarl service is starting", true, false},
                                                            {4, "Quarl service is running", false, true},
                                                            {3, "Quarl service is stopping", false, true},
                                                            {6, "Quarl service is pausing", false, true},
                                                            {7, "Quarl service is paused", false, true},
                                                            {5, "Quarl service continue pending", false, true},
                                                            {8, "", false, true},
                                                            {1, "Quarl service is stopped", true, false},
                                                            {0, "", true, false}};
  for (const auto& [state, text, start, stop] : cases) {
    service_.state = static_cast<control::ServiceState>(state);
    Tick();
    EXPECT_EQ(Panel(), Q(text)) << state;
    EXPECT_EQ(Enabled("SStart"), start) << state;
    EXPECT_EQ(Enabled("SStop"), stop) << state;
  }
}

TEST_F(ServiceMonitorTest, ButtonsAskTheServiceAndChangeNothingThemselves) {
  Start();
  Action(Q("SStart"))->trigger();
  Action(Q("SStop"))->trigger();
  Action(Q("SStop"))->trigger();
  EXPECT_EQ(service_.starts, 1);
  EXPECT_EQ(service_.stops, 2);
  EXPECT_EQ(Panel(), QString());
  EXPECT_TRUE(Enabled("SStart") && Enabled("SStop"));
}

TEST_F(ServiceMonitorTest, NothingIsAskedWhileADialogIsOpen) {
  Start();
  QDialog dialog(&Window());
  dialog.setModal(true);
  dialog.show();
  Tick();
  EXPECT_EQ(Panel(), QString());
  dialog.close();
  Tick();
  EXPECT_EQ(Panel(), Q("Quarl service is not installed"));
}

TEST_F(ServiceMonitorTest, AnUnreachableStoreIsToldAtEachTickInOneBoxAtATime) {
  Start();
  service_.state = control::ServiceState::Running;
  Tick();
  faulty_.ThrowFrom(Q("SystemConfig.GetServiceState"), 1, Q("The store does not answer."));
  for (int tick = 1; tick <= 2; ++tick) {
    dialogs_.Expect(Q("PlainBox"), [this](QWidget& box) {
      Tick();  // a second box would come here
      testing::DialogDriver::Click(Q("OKButton"))(box);
    });
    Tick();
    dialogs_.Verify();
    EXPECT_EQ(faulty_.Calls(Q("SystemConfig.GetServiceState")), 1 + tick);
  }
  EXPECT_EQ(Panel(), Q("Quarl service is running"));
  EXPECT_TRUE(Enabled("SStop") && !Enabled("SStart"));
  faulty_.Heal();
  service_.state = control::ServiceState::Stopped;
  Tick();
  EXPECT_EQ(Panel(), Q("Quarl service is stopped"));
}

/// Counts how often it is painted.
struct Painted : QWidget {
  void paintEvent(QPaintEvent*) override { ++times; }
  int times = 0;
};

TEST_F(ServiceMonitorTest, AWaitForChecksLetsWindowsPaintAndAsksNothing) {
  const store::SqlSetup setup{.location = store::StoreLocation::File(Folder("/store.db")),
                              .paths = InstallPaths(folder_.path()),
                              .inspector = nullptr,
                              .service = &service_,
                              .checkWaitMs = 300,
                              .pause = &ui::PaintingPause::Run};
  store::SqlStores waiting(setup);
  const qint32 server = AddServer("web");
  store::ServiceInstance deaf;
  deaf.id = Q("deaf");
  deaf.beatMs = SystemClock().NowMs();
  deaf.state = 4;
  ASSERT_FALSE(waiting.Service().Claim(deaf, 0));
  Start();
  service_.state = control::ServiceState::Running;
  Painted painted;
  painted.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&painted));
  const int before = painted.times;
  QTimer again;
  QObject::connect(&again, &QTimer::timeout, &painted, [&] {
    painted.update();
    Tick();
  });
  again.start(20);
  EXPECT_FALSE(waiting.Servers().CheckServer(server)) << "nobody answers";
  again.stop();
  EXPECT_GT(painted.times, before + 2);
  EXPECT_EQ(Panel(), QString()) << "a poll fell into a command";
  Tick();
  EXPECT_EQ(Panel(), Q("Quarl service is running"));
}

}  // namespace
}  // namespace quarl::shell
