#include <gtest/gtest.h>

#include <QStringList>
#include <stdexcept>

#include "support/DialogDriver.h"
#include "support/Text.h"
#include "ui/ErrorTrap.h"

namespace quarl::ui {
namespace {

using testing::DialogDriver;

class ErrorTrapTest : public ::testing::Test {
 protected:
  const ErrorTrap trap_{Q("Main"), MessageBoxes()};
  DialogDriver dialogs_;
};

TEST_F(ErrorTrapTest, GivesWhatTheBodyGivesAndShowsNothing) {
  int ran = 0;
  EXPECT_TRUE(trap_("LoadImages", [] { return true; }));
  EXPECT_EQ(trap_("Name", [] { return Q("x"); }), Q("x"));
  trap_("LoadMenu", [&] { ++ran; });
  EXPECT_EQ(ran, 1);
}

TEST_F(ErrorTrapTest, ShowsDescriptionAndTagAndGivesTheDefaultValue) {
  dialogs_.ExpectBox({Q("message"), Q("Quarl Console"), Q("The store is away.(Main:LoadImages)")});
  int before = 0;
  EXPECT_FALSE(trap_("LoadImages", [&]() -> bool {
    before = 1;
    throw Error(Q("The store is away."));
  }));
  EXPECT_EQ(before, 1) << "what was done before the error stays done";
  dialogs_.ExpectBox({Q("message"), Q("Quarl Console"), Q("No.")});
  trap_.Untagged([] { throw Error(Q("No.")); });
}

QStringList* logged = nullptr;
void KeepLine(QtMsgType, const QMessageLogContext& context, const QString& text) {
  if (Q("quarl.console") == Q(context.category)) logged->append(text);
}

TEST_F(ErrorTrapTest, QuietWritesOneLineAndShowsNothing) {
  QStringList lines;
  logged = &lines;
  const QtMessageHandler before = qInstallMessageHandler(KeepLine);
  trap_.Quiet("mTestCheck_Click", [] { throw Error(Q("Broken.")); });
  qInstallMessageHandler(before);
  EXPECT_EQ(lines, QStringList{Q("Broken.(Main:mTestCheck_Click)")});
}

TEST_F(ErrorTrapTest, LetsDefectsPass) {
  EXPECT_THROW(trap_("LoadTree", [] { throw std::logic_error("defect"); }), std::logic_error);
}

}  // namespace
}  // namespace quarl::ui
