#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

class ServiceMonitorTest : public MainFixture {
 protected:
  // A tick without waiting for its five seconds.
  void Tick() {
    auto* timer = Window().findChild<QTimer*>(Q("ServiceTimer"));
    QMetaObject::invokeMethod(timer, "timeout", Qt::DirectConnection);
  }
  QString Panel() { return Window().findChild<QLabel*>(Q("KVCStatusBar_Panel1"))->text(); }
  bool Enabled(const char* button) { return Action(Q(button))->isEnabled(); }
};

struct StateCase {
  int state;
  const char* text;
  bool start;
  bool stop;
};

TEST_F(ServiceMonitorTest, PanelAndButtonsFollowTheState) {
  Start();
  EXPECT_EQ(Panel(), QString()) << "nothing is asked before the first tick";
  const StateCase cases[] = {{-1, "Quarl service is not installed", false, false},
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
  for (const StateCase& each : cases) {
    service_.state = static_cast<control::ServiceState>(each.state);
    Tick();
    EXPECT_EQ(Panel(), Q(each.text)) << each.state;
    EXPECT_EQ(Enabled("SStart"), each.start) << each.state;
    EXPECT_EQ(Enabled("SStop"), each.stop) << each.state;
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

}  // namespace
}  // namespace quarl::shell
