// What the console tells about a store that it has opened ahead.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

#include "apps/console/CheckWhenShown.h"
#include "store/StoreFixture.h"
#include "support/DialogDriver.h"

namespace quarl::apps {
namespace {

class CheckWhenShownTest : public ::testing::Test {
 protected:
  CheckWhenShownTest() {
    qputenv("QUARL_STORE", "sqlite:" + QFile::encodeName(path_));
    StoreComposition(InstallPaths(folder_.path())).Sql().Open();
    stores_ = std::make_unique<StoreComposition>(InstallPaths(folder_.path()));
  }
  ~CheckWhenShownTest() override { qunsetenv("QUARL_STORE"); }

  QTemporaryDir folder_;
  const QString path_ = folder_.filePath(QStringLiteral("quarl.db"));
  std::unique_ptr<StoreComposition> stores_;
  QWidget window_;
  testing::DialogDriver dialogs_;
};

TEST_F(CheckWhenShownTest, DamageThatAStartDoesNotMeetIsToldOnce) {
  store::Patch(path_, store::PlaceOfLog(path_), QByteArray(4096, '\x7f'));  // a start does not read it
  stores_->OpenAhead();
  ASSERT_FALSE(stores_->Tree().ReadTree().failure);
  window_.show();
  dialogs_.ExpectAnyBox(QStringLiteral("OKButton"));
  CheckWhenShown(*stores_, window_);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !dialogs_.Boxes().empty(); }, 30'000));
  const QString text = dialogs_.Boxes()[0].text;
  EXPECT_TRUE(text.contains(path_) && text.contains(QStringLiteral("is damaged"))) << text.toStdString();
  EXPECT_THROW(std::ignore = stores_->Groups().GetGroups(0), store::StoreError);
  EXPECT_FALSE(window_.findChild<QTimer*>()->isActive());
}

TEST_F(CheckWhenShownTest, AWholeStoreIsCheckedInSilence) {
  stores_->OpenAhead();
  window_.show();
  CheckWhenShown(*stores_, window_);
  const auto* timer = window_.findChild<QTimer*>();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !timer->isActive(); }, 30'000));
  EXPECT_FALSE(stores_->CheckAside());
  EXPECT_GT(stores_->Groups().AddGroup(QStringLiteral("g"), {}), 0);
}

}  // namespace
}  // namespace quarl::apps
