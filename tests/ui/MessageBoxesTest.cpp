#include <gtest/gtest.h>

#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QTest>

#include "support/DialogDriver.h"
#include "support/Text.h"
#include "ui/BoxText.h"
#include "ui/MessageBoxes.h"
#include "ui/OneLine.h"

namespace quarl::ui {
namespace {

using testing::DialogDriver;

TEST(MessageBoxes, EachKindShowsItsTitleAndText) {
  QWidget owner;
  const MessageBoxes boxes(&owner);
  DialogDriver dialogs;
  const auto expect = [&](const char* kind, const char* title, const char* text, const char* button = "OKButton") {
    dialogs.Verify();
    dialogs.ExpectBox({Q(kind), Q(title), Q(text)}, Q(button));
  };
  expect("message", "Quarl Console", "It broke.(Main:LoadImages)");
  boxes.Plain(Q("It broke.(Main:LoadImages)"));
  expect("critical", "Stop", "Remove server failed!");
  boxes.Stop(Text::RemoveServerFailed);
  expect("critical", "Quarl Console", "Add test failed!");
  boxes.Stop(Text::AddTestFailed, MessageBoxes::Title::Application);
  expect("information", "Info", "Ping test successfull!");
  boxes.Info(Text::PingSucceeded);
  expect("warning", "Warning", "Alert test failed:  <b>no</b> & \"such\" host");
  boxes.Warning(Q("Alert test failed:  <b>no</b> & \"such\" host"));
  expect("warning", "Warning", "Are you sure to remove definitely this server?", "YesButton");
  EXPECT_TRUE(boxes.Confirm(Text::ConfirmRemoveServer));
  expect("question", "Warning", "Are you sure to remove this plugin?", "NoButton");
  EXPECT_FALSE(boxes.Confirm(Text::ConfirmRemovePlugin, MessageBoxes::Icon::Question));
}

TEST(MessageBoxes, EscapeAndEnterAnswerAConfirmationWithNo) {
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
    DialogDriver dialogs;
    dialogs.Expect(Q("ConfirmBox"), [key](QWidget& box) {
      QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &box, key);
    });
    EXPECT_FALSE(MessageBoxes().Confirm(Text::ConfirmRemoveGroup)) << key;
  }
}

TEST(MessageBoxes, NeverReadMarkupOutOfData) {
  DialogDriver dialogs;
  dialogs.Expect(Q("StopBox"), [](QWidget& box) {
    EXPECT_EQ(qobject_cast<QMessageBox*>(&box)->textFormat(), Qt::PlainText);
    DialogDriver::Click(Q("OKButton"))(box);
  });
  MessageBoxes().Stop(Q("<h1>name</h1>"));
}

TEST(MessageBoxes, FitTheScreenWhateverTheText) {
  QString lines;
  for (int line = 0; line < 500; ++line) lines += QString::number(line) + u'\n';
  const QString texts[] = {QString(10000, u'W'), QString(10000, QChar(0x05D0)), lines, Q("word ").repeated(5000)};
  for (const QString& text : texts) {
    DialogDriver dialogs;
    dialogs.Expect(Q("InfoBox"), [](QWidget& box) {
      const QRect screen = box.screen()->availableGeometry();
      EXPECT_LE(box.width(), screen.width());
      EXPECT_LE(box.height(), screen.height());
      const auto* label = box.findChild<QLabel*>(Q("qt_msgbox_label"));
      ASSERT_NE(label, nullptr);
      EXPECT_GE(label->width(), label->minimumSizeHint().width()) << "the text is clipped";
      DialogDriver::Click(Q("OKButton"))(box);
    });
    MessageBoxes().Info(text);
  }
}

TEST(BoxText, KeepsShortTextsAndBothEndsOfLongOnes) {
  const QString path = Q("The module /usr/lib/x86_64-linux-gnu/quarl/ping.dll is missing.(Main:LoadImages)");
  EXPECT_EQ(FitForBox(path), path);
  EXPECT_EQ(FitForBox(QString()), QString());
  const QString shown = FitForBox(Q("begin ") + Q("middle ").repeated(4000) + Q("(Main:LoadTree)"));
  EXPECT_TRUE(shown.startsWith(Q("begin middle")));
  EXPECT_TRUE(shown.endsWith(Q("(Main:LoadTree)")));
  EXPECT_TRUE(shown.contains(QChar(0x2026)));
  EXPECT_LT(shown.size(), 1300);
}

TEST(OneLine, HasNoBreaksAndEndsInTime) {
  const std::pair<const char*, const char*> cases[] = {{"", ""},
                                                       {"ping", "ping"},
                                                       {"two\nlines\t!", "two lines !"},
                                                       {"0123456789ab", "0123456789ab"},
                                                       {"0123456789abc", "0123456789ab\xE2\x80\xA6"},
                                                       {"0123456789a\xF0\x9F\x98\x80!", "0123456789a\xE2\x80\xA6"}};
  for (const auto& [text, line] : cases) EXPECT_EQ(OneLine(Q(text), 12), Q(line)) << text;
}

TEST(BoxText, NeverCutsACharacterInTwo) {
  const QString smile = Q("\xF0\x9F\x98\x80");
  for (int offset = 0; offset < 2; ++offset) {
    const QString shown = FitForBox(QString(offset, u'x') + smile.repeated(3000) + QString(offset, u'y'));
    EXPECT_TRUE(shown.isValidUtf16());
  }
}

}  // namespace
}  // namespace quarl::ui
