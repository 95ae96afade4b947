#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "control/FakeServiceManager.h"
#include "control/SystemdControl.h"
#include "support/Await.h"

namespace quarl::control {
namespace {

using test::FakeServiceManager;

class SystemdControlTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(manager_.IsUp()) << "dbus-daemon (Debian: dbus-daemon) could not be started"; }

  bool Requested(const QString& request) {
    return testing::Await([&] { return manager_.Requests().contains(request); });
  }
  /// Asks until the answer is a fresh one: under load a first answer may miss the quarter of a second.
  static int Settled(SystemdControl& control, int wanted) {
    int state = 0;
    testing::Await([&] { return (state = static_cast<int>(control.State())) == wanted; });
    return state;
  }

  FakeServiceManager manager_;
};

TEST_F(SystemdControlTest, EveryStateOfAUnitHasItsCode) {
  SystemdControl control;
  for (const auto& [load, active, freezer, state] : {
           std::tuple{"loaded", "inactive", "running", 1},
           {"loaded", "failed", "", 1},
           {"loaded", "activating", "running", 2},
           {"loaded", "reloading", "running", 2},
           {"loaded", "deactivating", "running", 3},
           {"loaded", "active", "running", 4},
           {"loaded", "active", "", 4},
           {"loaded", "active", "thawing", 5},
           {"loaded", "active", "freezing", 6},
           {"loaded", "active", "frozen", 7},
           {"not-found", "inactive", "", -1},
           {"masked", "inactive", "", -1},
       }) {
    manager_.SetUnit(QLatin1String(load), QLatin1String(active), QLatin1String(freezer));
    EXPECT_EQ(Settled(control, state), state) << load << ' ' << active << ' ' << freezer;
  }
}

TEST_F(SystemdControlTest, RequestsAreSentWithTheUsersAuthorisation) {
  SystemdControl control;
  ASSERT_EQ(Settled(control, 1), 1);
  EXPECT_TRUE(control.Start());
  EXPECT_TRUE(Requested(QStringLiteral("StartUnit quarld.service replace")));
  manager_.Refuse(true);
  EXPECT_TRUE(control.Stop()) << "the refusal comes later";
  EXPECT_EQ(Settled(control, 1), 1);
  manager_.Refuse(false);
  EXPECT_TRUE(control.Stop());
  EXPECT_TRUE(Requested(QStringLiteral("StopUnit quarld.service replace")));
}

TEST_F(SystemdControlTest, ASilentBusHoldsNobodyUp) {
  SystemdControl control;
  manager_.SetUnit(QStringLiteral("loaded"), QStringLiteral("active"), {});
  ASSERT_EQ(Settled(control, 4), 4);
  manager_.FallSilent();
  QElapsedTimer elapsed;
  elapsed.start();
  EXPECT_EQ(static_cast<int>(control.State()), 4);
  EXPECT_LT(elapsed.elapsed(), 2'000);
}

TEST_F(SystemdControlTest, WithoutABusNothingIsInstalled) {
  SystemdControl control;
  ASSERT_EQ(Settled(control, 1), 1);
  manager_.EndBus();
  EXPECT_EQ(Settled(control, -1), -1);
  EXPECT_FALSE(control.Start());
}

}  // namespace
}  // namespace quarl::control
