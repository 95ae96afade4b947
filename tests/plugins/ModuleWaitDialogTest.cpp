#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "plugins/HostFolder.h"
#include "plugins/ModuleWaitDialog.h"
#include "plugins/contract/HostedCalls.h"
#include "plugins/contract/ModuleError.h"
#include "support/DialogDriver.h"

namespace quarl::plugins {
namespace {

using namespace std::chrono_literals;

class ModuleWaitDialogTest : public ::testing::Test {
 protected:
  ModuleWaitDialogTest() {
    button_.setGeometry(0, 0, 100, 40);
    QObject::connect(&button_, &QPushButton::clicked, [this] { ++clicks_; });
    window_.resize(200, 100);
    window_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
  }

  qint16 Call(const char* command, std::chrono::milliseconds cancelAfter) {
    ModuleWaitDialog wait(&window_, cancelAfter);
    HostedCalls calls(folder_.Paths(), wait);
    QString path = folder_.Module("probe.dll");
    QString name = QString::fromLatin1(command);
    QString properties;
    return calls.SetProperties(ModuleKind::Test, path, name, address_, properties);
  }

  /// As a user does: through the window, not the widget.
  void ClickTheWindow() { QTest::mouseClick(window_.windowHandle(), Qt::LeftButton, {}, {50, 20}); }

  /// Every few milliseconds until the act says that it has done its part.
  void Each(const std::function<bool()>& act) {
    QObject::connect(&ticker_, &QTimer::timeout, [this, act] {
      if (act()) ticker_.stop();
    });
    ticker_.start(5);
  }

  void OpenThePipe() {
    QFile pipe(address_);
    EXPECT_TRUE(pipe.open(QIODevice::WriteOnly));
  }

  HostFolder folder_;
  QWidget window_;
  QPushButton button_{&window_};
  QTimer ticker_;
  QString address_ = folder_.MakePipe();
  int clicks_ = 0;
};

TEST_F(ModuleWaitDialogTest, TimersRunInputIsBlockedAndThePointerSaysWhy) {
  ClickTheWindow();
  ASSERT_EQ(clicks_, 1);
  int ticks = 0;
  Each([&] {
    ClickTheWindow();
    EXPECT_EQ(window_.cursor().shape(), Qt::WaitCursor);
    EXPECT_TRUE(window_.isVisible());
    if (++ticks < 20) return false;
    OpenThePipe();
    return true;
  });
  EXPECT_EQ(Call("wait", 1h), 0);
  EXPECT_EQ(ticks, 20);
  EXPECT_EQ(clicks_, 1);
  EXPECT_EQ(window_.cursor().shape(), Qt::ArrowCursor);
  ClickTheWindow();
  EXPECT_EQ(clicks_, 2);
}

TEST_F(ModuleWaitDialogTest, ThePointerIsTheUsualOneWhileTheModuleShowsADialog) {
  Each([&] {
    if (window_.cursor().shape() != Qt::ArrowCursor) return false;
    ClickTheWindow();
    OpenThePipe();
    return true;
  });
  EXPECT_EQ(Call("own window", 1h), 0);
  EXPECT_EQ(clicks_, 0);
}

TEST_F(ModuleWaitDialogTest, ALongWaitCanBeCancelled) {
  quarl::testing::DialogDriver dialogs;
  dialogs.Expect(QStringLiteral("ModuleWait"), quarl::testing::DialogDriver::Click(QStringLiteral("CancelButton")));
  try {
    Call("hang", 20ms);
    ADD_FAILURE();
  } catch (const ModuleError& error) {
    EXPECT_STREQ(error.what(), "The call of the module probe.dll was cancelled.");
  }
  ClickTheWindow();
  EXPECT_EQ(clicks_, 1);
}

}  // namespace
}  // namespace quarl::plugins
