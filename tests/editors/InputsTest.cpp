#include <QApplication>
#include <QClipboard>
#include <QMimeData>

#include "editors/EditorRig.h"
#include "editors/NumberText.h"
#include "editors/ThresholdInput.h"
#include "ui/AddressInput.h"

namespace quarl::editors {
namespace {

template <typename Act>
QString Outcome(Act&& act) {
  try {
    return QString::number(act());
  } catch (const Error& error) {
    return error.Description();
  }
}

// --- Numbers ---

struct NumberCase {
  const char* text;
  const char* leading;
  const char* whole;  ///< "!" = any error but Overflow
};

TEST(NumberText, ReadsRoundsAndBounds) {
  const NumberCase cases[] = {{"15", "15", "15"},
                              {"15minutes", "15", "!"},
                              {"15 7", "15", "!"},
                              {"", "0", "!"},
                              {"  ", "0", "!"},
                              {"abc", "0", "!"},
                              {"-", "0", "!"},
                              {".", "0", "!"},
                              {"  8 ", "8", "8"},
                              {"+4", "4", "4"},
                              {"-12", "-12", "-12"},
                              {"--1", "0", "!"},
                              {"2.5", "2", "2"},
                              {"3.5", "4", "4"},
                              {"-2.5", "-2", "-2"},
                              {"-0.4", "0", "0"},
                              {".5", "0", "0"},
                              {"1.", "1", "1"},
                              {"1.5.9", "2", "!"},
                              {"1,5", "1", "!"},
                              {"1e2", "100", "100"},
                              {"15e", "15", "!"},
                              {"32767", "32767", "32767"},
                              {"32767.49", "32767", "32767"},
                              {"32767.5", "Overflow", "Overflow"},
                              {"32768", "Overflow", "Overflow"},
                              {"-32768.5", "-32768", "-32768"},
                              {"-32769", "Overflow", "Overflow"},
                              {"1e999", "Overflow", "Overflow"},
                              {"1e-999", "0", "0"},
                              {"inf", "0", "!"},
                              {"nan", "0", "!"},
                              {"0x10", "0", "!"},
                              {"\xd9\xa3", "0", "!"}};
  for (const NumberCase& c : cases) {
    EXPECT_EQ(Outcome([&] { return LeadingNumber(Q(c.text)); }), Q(c.leading)) << c.text;
    const QString whole = Outcome([&] { return WholeNumber(Q(c.text)); });
    if (*c.whole == '!') {
      EXPECT_TRUE(whole.contains(Q("not a number"))) << c.text << ": " << whole.toStdString();
    } else {
      EXPECT_EQ(whole, Q(c.whole)) << c.text;
    }
  }
  EXPECT_EQ(Outcome([] { return LeadingNumber(QString(5000, u'9')); }), Q("Overflow"));
}

// --- Threshold ---

TEST(ThresholdInput, StepsStayWithinOneAndTenAndTypedTextStays) {
  struct Case {
    const char* text;
    const char* up;
    const char* down;
  };
  for (const Case& c : {Case{"3", "4", "2"}, Case{"10", "10", "9"}, Case{"1", "2", "1"}, Case{"50", "50", "10"},
                        Case{"-5", "1", "-5"}, Case{"", "1", ""}, Case{"99999", "99999", "10"}}) {
    for (const bool up : {true, false}) {
      ThresholdInput input;
      input.show();
      auto* edit = input.findChild<QLineEdit*>(Q("NFail"));
      edit->setFocus();
      QTest::keyClicks(edit, Q(c.text));
      QTest::keyClick(edit, Qt::Key_Return);
      EXPECT_EQ(input.Text(), Q(c.text)) << "typed";
      QTest::keyClick(&input, up ? Qt::Key_Up : Qt::Key_Down);
      EXPECT_EQ(input.Text(), Q(up ? c.up : c.down)) << c.text << (up ? " up" : " down");
      EXPECT_GE(input.property("value").toInt(), 1);
      EXPECT_LE(input.property("value").toInt(), 10);
    }
  }
}

// --- Address ---

class AddressTest : public ::testing::Test {
 protected:
  AddressTest() {
    window.show();
    QApplication::setActiveWindow(&window);
    Octet(1)->setFocus(Qt::TabFocusReason);
  }
  QLineEdit* Octet(int number) const { return input.findChild<QLineEdit*>(Q("Octet%1").arg(number)); }
  int Focused() const { return window.focusWidget()->objectName().right(1).toInt(); }
  /// Each character goes to the octet that has the focus then; "<" is Left, ">" Right, "#" Backspace.
  void Keys(const char* keys) {
    for (const QChar key : Q(keys)) {
      QWidget* target = window.focusWidget();
      if (key == u'<') {
        QTest::keyClick(target, Qt::Key_Left);
      } else if (key == u'>') {
        QTest::keyClick(target, Qt::Key_Right);
      } else if (key == u'#') {
        QTest::keyClick(target, Qt::Key_Backspace);
      } else {
        QTest::keyClicks(target, key);
      }
    }
  }
  QString Shown() const {
    QStringList texts;
    for (int number = 1; number <= 4; ++number) texts.append(Octet(number)->text());
    return texts.join(u'|');
  }

  QWidget window;
  ui::AddressInput input{&window};
};

TEST_F(AddressTest, TypingMovesThroughTheOctets) {
  struct Case {
    const char* before;
    const char* keys;
    const char* shown;
    int focus;
  };
  const Case cases[] = {{"", "10.0.0.1", "10|0|0|1", 4},
                        {"192.168.0.1", "10.20.30.40", "10|20|30|40", 4},
                        {"1.2.3.4", "192.168.30.40", "192|168|30|40", 4},
                        {"", "192168001001", "192|168|001|001", 4},
                        {"", "192.168.10.20", "192|168|10|20", 4},
                        {"", "256", "25|||", 1},
                        {"", "26.7", "26|7||", 2},
                        {"", "30.30.30.301", "30|30|30|30", 4},
                        {"", "010.000.000.001", "010|000|000|001", 4},
                        {"", "...1", "1|||", 1},
                        {"", "1,2,3,4", "1|2|3|4", 4},
                        {"", "1a-2 .x", "12|||", 2},
                        {"1.2.3.4", ".", "1|2|3|4", 2},
                        {"1.2.3.4", ">>", "1|2|3|4", 2},
                        {"1.2.3.4", "<<", "1|2|3|4", 1},
                        {"1.2.3.4", "..#9", "1|2|9|4", 3},
                        {"11.22.33.44", "..##", "11|22||44", 2},
                        {"11.22.33.44", "..##5", "11|225||44", 3},
                        {"11.22.33.44", "..<<#", "11|2|33|44", 2},
                        {"1.2.3.4", "...####", "1|2||", 2},
                        {"", "255255255255", "255|255|255|255", 4}};
  for (const Case& c : cases) {
    input.Clear();
    input.SetText(Q(c.before));
    window.setFocus();
    Octet(1)->setFocus(Qt::TabFocusReason);
    Keys(c.keys);
    EXPECT_EQ(Shown(), Q(c.shown)) << c.before << " then " << c.keys;
    EXPECT_EQ(Focused(), c.focus) << c.before << " then " << c.keys;
  }
}

TEST_F(AddressTest, PasteTakesAWholeAddressOrOneNumberAndRefusesTheRest) {
  struct Case {
    const char* pasted;
    const char* shown;  ///< after a paste into octet 2 of 1.2.3.4
  };
  for (const Case& c : {Case{"10.20.30.40", "10|20|30|40"}, Case{"  10.20.30.40\n", "10|20|30|40"},
                        Case{"77", "1|77|3|4"}, Case{"010.0.0.1", "10|0|0|1"}, Case{"256", "1|2|3|4"},
                        Case{"10.20.30.400", "1|2|3|4"}, Case{"10.20.30", "1|2|3|4"}, Case{"1.2.3.4.5", "1|2|3|4"},
                        Case{"", "1|2|3|4"}, Case{"-1", "1|2|3|4"}, Case{"web.example", "1|2|3|4"}}) {
    input.SetText(Q("1.2.3.4"));
    Octet(2)->setFocus();
    Octet(2)->end(false);
    QApplication::clipboard()->setText(Q(c.pasted));
    QTest::keySequence(Octet(2), QKeySequence::Paste);
    EXPECT_EQ(Shown(), Q(c.shown)) << c.pasted;

    input.SetText(Q("1.2.3.4"));
    QMimeData data;
    data.setText(Q(c.pasted));
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Octet(2), &enter);
    QDropEvent drop(QPointF(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Octet(2), &drop);
    EXPECT_EQ(Shown(), Q(c.shown)) << "dropped " << c.pasted;

    input.SetText(Q("1.2.3.4"));
    if (!Q(c.pasted).isEmpty()) Octet(2)->setText(Q(c.pasted).trimmed());  // as assistive software does
    EXPECT_EQ(Shown(), Q(c.shown)) << "set " << c.pasted;
  }
}

TEST_F(AddressTest, CopyGivesTheWholeAddress) {
  input.SetText(Q("10.20.30.40"));
  QTest::keySequence(Octet(3), QKeySequence::Copy);
  EXPECT_EQ(QApplication::clipboard()->text(), Q("10.20.30.40"));
}

TEST_F(AddressTest, EntrySelectsTheOctet) {
  input.SetText(Q("10.20.30.40"));
  window.setFocus();
  Octet(1)->setFocus(Qt::TabFocusReason);
  EXPECT_EQ(Octet(1)->selectedText(), Q("10"));
  Keys(".");
  EXPECT_EQ(Octet(2)->selectedText(), Q("20"));
  EXPECT_EQ(Octet(1)->selectedText(), QString());
}

TEST_F(AddressTest, TextIsPlainDecimalAndEmptyOctetsAreZero) {
  Keys("010.7");
  EXPECT_EQ(input.Text(), Q("10.7.0.0"));
  EXPECT_FALSE(input.IsBlank());
  input.Clear();
  EXPECT_TRUE(input.IsBlank());
  EXPECT_EQ(input.Text(), Q("0.0.0.0"));
  for (const int value : {-1, 256}) EXPECT_THROW(input.SetOctet(1, value), Error);
  for (const int number : {0, 5}) EXPECT_THROW(input.SetOctet(number, 1), Error);
}

}  // namespace
}  // namespace quarl::editors
