#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QTemporaryDir>
#include <memory>

#include "control/HostControl.h"
#include "control/LocalControl.h"
#include "control/ServiceLock.h"
#include "support/Await.h"
#include "support/SteppedService.h"

namespace quarl::control {
namespace {

class LocalControlTest : public ::testing::Test {
 protected:
  ~LocalControlTest() override {
    if (const auto holder = ServiceLock::Look(Lock())) kill(static_cast<pid_t>(holder->pid), SIGKILL);
  }

  QString Lock() const { return folder_.filePath(QStringLiteral("store.service")); }
  LocalControl::Setup Setup() const {
    return {QStringLiteral(LOCK_HOLDER), Lock(), Lock(), folder_.filePath(QStringLiteral("errors"))};
  }
  void Signal(int signal) const {
    const auto holder = ServiceLock::Look(Lock());
    ASSERT_TRUE(holder);
    ASSERT_EQ(kill(static_cast<pid_t>(holder->pid), signal), 0);
  }
  static bool Becomes(ServiceControl& control, ServiceState state) {
    return testing::Await([&] { return control.State() == state; });
  }
  bool WaitForLock() const {
    return testing::Await([this] { return ServiceLock::Look(Lock()).has_value(); });
  }

  QTemporaryDir folder_;
};

TEST_F(LocalControlTest, FollowsAProcessFromStartToEnd) {
  LocalControl control(Setup());
  EXPECT_EQ(control.State(), ServiceState::Stopped);
  EXPECT_FALSE(control.Stop());
  EXPECT_TRUE(control.Start());
  EXPECT_EQ(control.State(), ServiceState::StartPending);
  EXPECT_FALSE(control.Start()) << "a second process while the first one starts";
  ASSERT_TRUE(WaitForLock());
  EXPECT_EQ(control.State(), ServiceState::StartPending);
  Signal(SIGUSR1);
  EXPECT_TRUE(Becomes(control, ServiceState::Running));
  EXPECT_FALSE(control.Start());

  // Another program of the user finds the same process.
  LocalControl other(Setup());
  EXPECT_EQ(other.State(), ServiceState::Running);
  EXPECT_TRUE(other.Stop());
  EXPECT_TRUE(Becomes(control, ServiceState::StopPending));
  Signal(SIGUSR2);
  EXPECT_TRUE(Becomes(control, ServiceState::Stopped));
}

TEST_F(LocalControlTest, AKilledProcessLeavesNothingBehind) {
  LocalControl control(Setup());
  ASSERT_TRUE(control.Start());
  ASSERT_TRUE(WaitForLock());
  EXPECT_FALSE(ServiceLock::Take(Lock())) << "two services for one store";
  Signal(SIGKILL);
  EXPECT_TRUE(Becomes(control, ServiceState::Stopped));
  EXPECT_TRUE(ServiceLock::Take(Lock()));
}

TEST_F(LocalControlTest, AProcessThatEndsAtOnceIsNoStart) {
  LocalControl::Setup setup = Setup();
  setup.program = QStringLiteral("/bin/false");
  LocalControl control(setup);
  EXPECT_TRUE(control.Start());
  EXPECT_TRUE(Becomes(control, ServiceState::Stopped));
}

TEST_F(LocalControlTest, AMissingProgramIsNotInstalled) {
  LocalControl::Setup setup = Setup();
  setup.program = folder_.filePath(QStringLiteral("quarld"));
  LocalControl control(setup);
  EXPECT_EQ(control.State(), ServiceState::NotInstalled);
  EXPECT_FALSE(control.Start());
}

TEST_F(LocalControlTest, HostileLockFiles) {
  LocalControl control(Setup());
  QFile file(Lock());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("99 trailing words that are no state");
  file.close();
  EXPECT_EQ(control.State(), ServiceState::Stopped) << "a file that nobody locks says nothing";
  QFile::remove(Lock());
  ASSERT_TRUE(QFile::link(QStringLiteral("/etc/passwd"), Lock()));
  EXPECT_THROW(ServiceLock::Take(Lock()), LockError);
}

TEST_F(LocalControlTest, TheUnitGovernsUnlessAProcessOfTheUserServesTheStore) {
  auto owned = std::make_unique<testing::SteppedService>();
  testing::SteppedService& unit = *owned;
  unit.state = ServiceState::Stopped;
  HostControl control(Setup(), std::move(owned));
  EXPECT_TRUE(control.Start());
  EXPECT_EQ(unit.starts, 1);
  EXPECT_FALSE(ServiceLock::Look(Lock()));

  unit.state = ServiceState::NotInstalled;
  EXPECT_TRUE(control.Start());
  ASSERT_TRUE(WaitForLock());
  Signal(SIGUSR1);
  unit.state = ServiceState::Stopped;
  EXPECT_TRUE(Becomes(control, ServiceState::Running));
  EXPECT_TRUE(control.Stop());
  EXPECT_EQ(unit.starts + unit.stops, 1);
  EXPECT_TRUE(Becomes(control, ServiceState::StopPending));
  unit.state = ServiceState::Paused;
  EXPECT_EQ(control.State(), ServiceState::Paused);
}

}  // namespace
}  // namespace quarl::control
