#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/DialogDriver.h"
#include "ui/MessageBoxes.h"

namespace quarl::testing {
namespace {

// The driver is what other tests rely on, so it is shown to fail where it should.
TEST(DialogDriver, FailsForADialogThatNobodyExpectsAndClosesIt) {
  EXPECT_NONFATAL_FAILURE(
      {
        DialogDriver dialogs;
        ui::MessageBoxes().Info(QStringLiteral("surprise"));
      },
      "nobody expected");
}

TEST(DialogDriver, FailsForADialogThatDoesNotCome) {
  EXPECT_NONFATAL_FAILURE(
      {
        DialogDriver dialogs;
        dialogs.ExpectAnyBox(QStringLiteral("OKButton"));
      },
      "did not come");
}

TEST(DialogDriver, FailsForAnotherTextOrKindThanExpected) {
  EXPECT_NONFATAL_FAILURE(
      {
        DialogDriver dialogs;
        dialogs.ExpectBox({QStringLiteral("critical"), QStringLiteral("Info"), QStringLiteral("done")},
                          QStringLiteral("OKButton"));
        ui::MessageBoxes().Info(QStringLiteral("done"));
      },
      "but this came");
}

TEST(DialogDriver, FailsForAButtonThatIsNotThere) {
  EXPECT_NONFATAL_FAILURE(
      {
        DialogDriver dialogs;
        dialogs.ExpectAnyBox(QStringLiteral("YesButton"));
        ui::MessageBoxes().Info(QStringLiteral("done"));
      },
      "No button YesButton");
}

TEST(DialogDriver, AnswersADialogThatAnAnswerOpens) {
  DialogDriver dialogs;
  dialogs.Expect(QStringLiteral("ConfirmBox"), [](QWidget& box) {
    ui::MessageBoxes(&box).Info(QStringLiteral("inner"));
    DialogDriver::Click(QStringLiteral("YesButton"))(box);
  });
  dialogs.ExpectBox({QStringLiteral("information"), QStringLiteral("Info"), QStringLiteral("inner")},
                    QStringLiteral("OKButton"));
  EXPECT_TRUE(ui::MessageBoxes().Confirm(Text::ConfirmClearLog));
  EXPECT_EQ(dialogs.Boxes().size(), 2U);
}

}  // namespace
}  // namespace quarl::testing
