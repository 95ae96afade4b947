#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QtTest>
#include <future>

#include "forms/FormDialog.h"
#include "kit/FormText.h"

namespace quarl::forms {
namespace {

using kit::FieldType;
using kit::Json;

const kit::Form& TestForm() {
  static const kit::Form form{
      "",
      "Probe & properties",
      {{.key = "port",
        .label = "Port",
        .type = FieldType::Integer,
        .unit = "ms",
        .help = "<b>Bold</b>",
        .minimum = 1,
        .maximum = 65535},
       {.key = "large", .label = "Large", .type = FieldType::Integer},
       {.key = "share", .label = "Share", .type = FieldType::Decimal},
       {.key = "name", .label = "Name", .group = "Who & what", .required = true, .longest = 10},
       {.key = "body", .label = "Body", .type = FieldType::Lines, .group = "Who & what"},
       {.key = "hosts", .label = "Hosts", .type = FieldType::List, .group = "Who & what", .longest = 8},
       {.key = "login", .label = "Log in", .type = FieldType::Boolean},
       {.key = "word",
        .label = "Password",
        .type = FieldType::Secret,
        .required = true,
        .enabledWhen = kit::Condition{"login", true}},
       {.key = "mode", .label = "Mode", .type = FieldType::Choice, .choices = {{"a", "First"}, {"b", "Second"}}}}};
  return form;
}

Json TestValues() {
  return {{"port", 80},
          {"large", 9007199254740991},
          {"share", 0.12345},
          {"name", "m\xc3\xbcller"},
          {"body",
           "a\xc2\xa0"
           "b\nc"},
          {"hosts", {"one", "two"}},
          {"login", false},
          {"word", "secret"},
          {"mode", "b"}};
}

/// A module behind the form: answers as it is told, on whatever thread it is asked.
struct Module {
  std::string judgedKey;  ///< "" agrees
  std::string judgement = "Not so.";
  std::string report = "Passed\nAll is well.";
  std::shared_future<void> hold;  ///< a trial waits for it, when valid
  std::atomic<int> trials{0};
  std::atomic<int> left{0};
  Json tried;

  QuarlFormCalls Calls() { return {sizeof(QuarlFormCalls), this, &Try, &Validate}; }
  static int16_t Try(void* context, const char* values, QuarlBuffer report) {
    auto& self = *static_cast<Module*>(context);
    self.tried = Json::parse(values);
    ++self.trials;
    if (self.hold.valid()) self.hold.wait();
    self.report.copy(report.text, report.size - 1);
    ++self.left;
    return 0;
  }
  static int16_t Validate(void* context, const char*, QuarlBuffer field, QuarlBuffer report) {
    const auto& self = *static_cast<Module*>(context);
    if (self.judgedKey.empty()) return 0;
    self.judgedKey.copy(field.text, field.size - 1);
    self.judgement.copy(report.text, report.size - 1);
    return 1;
  }
};

class FormDialogTest : public ::testing::Test {
 protected:
  void Open(const std::string& note = {}, std::size_t room = 4000) {
    dialog_ = std::make_unique<FormDialog>(ReadForm(kit::FormText(TestForm(), note, "Try it"), TestValues().dump()),
                                           module_.Calls(), room);
    dialog_->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
  }
  template <typename Widget>
  Widget* Find(const char* name) const {
    auto* widget = dialog_->findChild<Widget*>(QString::fromUtf8(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }
  void Click(const char* button) const { Find<QPushButton>(button)->click(); }
  QString Error(const std::string& key) const {
    auto* label = Find<QLabel>((key + "Error").c_str());
    return label->isVisible() ? label->text() : QString();
  }
  Module module_;
  std::unique_ptr<FormDialog> dialog_;
};

TEST_F(FormDialogTest, WhatIsNotEditedComesBackToTheByte) {
  Open();
  EXPECT_EQ(dialog_->Values(), TestValues());
  Click("OKButton");
  EXPECT_EQ(dialog_->result(), QDialog::Accepted);
}

TEST_F(FormDialogTest, EachKindOfFieldGivesWhatTheUserEntered) {
  Open();
  Find<QSpinBox>("port")->setValue(8080);
  Find<QDoubleSpinBox>("large")->setValue(5e12);
  Find<QDoubleSpinBox>("share")->setValue(0.5);
  auto* name = Find<QLineEdit>("name");
  name->selectAll();
  QTest::keyClicks(name, QStringLiteral("x y"));
  Find<QPlainTextEdit>("body")->setPlainText(QStringLiteral("one\ntwo"));
  Find<QPlainTextEdit>("hosts")->setPlainText(QStringLiteral(" one \n\n three\n"));
  Find<QCheckBox>("login")->click();
  Find<QLineEdit>("word")->setText(QStringLiteral("new"));
  Find<QComboBox>("mode")->setCurrentIndex(0);
  const Json wanted{{"port", 8080},  {"large", 5000000000000}, {"share", 0.5},
                    {"name", "x y"}, {"body", "one\ntwo"},     {"hosts", {"one", "three"}},
                    {"login", true}, {"word", "new"},          {"mode", "a"}};
  EXPECT_EQ(dialog_->Values(), wanted);
}

TEST_F(FormDialogTest, FieldsAreNamedExplainedAndHidden) {
  Open("First line.\nSecond line.");
  EXPECT_EQ(Find<QLabel>("NoteText")->text(), QStringLiteral("First line.\nSecond line."));
  EXPECT_EQ(Find<QLineEdit>("name")->accessibleName(), QStringLiteral("Name"));
  EXPECT_EQ(Find<QSpinBox>("port")->text(), QStringLiteral("80 ms"));
  EXPECT_EQ(Find<QSpinBox>("port")->accessibleDescription(), QStringLiteral("<b>Bold</b>"));
  EXPECT_TRUE(Find<QSpinBox>("port")->toolTip().contains(QStringLiteral("&lt;b&gt;")));
  auto* word = Find<QLineEdit>("word");
  EXPECT_FALSE(word->displayText().contains(QStringLiteral("secret")));
  EXPECT_EQ(word->displayText().size(), 6);
  EXPECT_FALSE(word->isEnabled());
  Find<QCheckBox>("login")->click();
  EXPECT_TRUE(word->isEnabled());
  EXPECT_EQ(Find<QLabel>("nameLabel")->buddy(), Find<QLineEdit>("name"));
}

TEST_F(FormDialogTest, WhatIsWrongStandsAtTheFieldThatGetsTheFocus) {
  Open();
  const std::tuple<const char*, QString, const char*> rows[] = {
      {"name", QString(), "may not be empty"},
      {"name", QStringLiteral("12345678901"), "takes 11 bytes"},
      {"name", QStringLiteral("äöüäöü"), "takes 12 bytes"},
      {"name", QStringLiteral("a\tb"), "Control characters"},
  };
  for (const auto& [key, text, error] : rows) {
    auto* line = Find<QLineEdit>(key);
    line->setText(text);
    Find<QSpinBox>("port")->setFocus();
    Click("OKButton");
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_TRUE(Error(key).contains(QString::fromUtf8(error))) << Error(key).toStdString();
    EXPECT_TRUE(line->hasFocus());
    EXPECT_EQ(line->accessibleDescription(), Error(key));
  }
  Find<QLineEdit>("name")->setText(QStringLiteral("good"));
  Find<QPlainTextEdit>("hosts")->setPlainText(QStringLiteral("ok\n123456789"));
  Click("TryButton");
  EXPECT_EQ(Error("name"), QString());
  EXPECT_TRUE(Error("hosts").startsWith(QStringLiteral("Line 2: ")));
  EXPECT_EQ(module_.trials, 0);
}

TEST_F(FormDialogTest, TheModuleHasItsSayBeforeTheDialogCloses) {
  module_.judgedKey = "mode";
  Open();
  Click("OKButton");
  EXPECT_TRUE(dialog_->isVisible());
  EXPECT_EQ(Error("mode"), QStringLiteral("Not so."));
  module_.judgedKey = "no such field";
  Click("OKButton");
  EXPECT_EQ(Error("mode"), QString());
  EXPECT_EQ(Find<QPlainTextEdit>("ResultText")->toPlainText(), QStringLiteral("Not so."));
  module_.judgedKey.clear();
  Click("OKButton");
  EXPECT_EQ(dialog_->result(), QDialog::Accepted);
}

TEST_F(FormDialogTest, ValuesThatDoNotFitTheirBufferAreNotLost) {
  Open({}, 200);
  Find<QPlainTextEdit>("body")->setPlainText(QString(200, u'x'));
  Click("OKButton");
  EXPECT_TRUE(dialog_->isVisible());
  EXPECT_TRUE(Find<QPlainTextEdit>("ResultText")->toPlainText().contains(QStringLiteral("too long")));
}

TEST_F(FormDialogTest, ATrialShowsItsReportAndRunsOnceAtATime) {
  std::promise<void> gate;
  module_.hold = gate.get_future().share();
  Open();
  auto* button = Find<QPushButton>("TryButton");
  EXPECT_EQ(button->text(), QStringLiteral("Try it"));
  Find<QSpinBox>("port")->setValue(81);
  Click("TryButton");
  EXPECT_FALSE(button->isEnabled());
  Find<QSpinBox>("port")->setValue(82);
  Click("TryButton");
  EXPECT_TRUE(Find<QLabel>("ResultHead")->text().startsWith(QStringLiteral("Running")));
  gate.set_value();
  EXPECT_TRUE(QTest::qWaitFor([&] { return button->isEnabled(); }));
  EXPECT_EQ(module_.trials, 1);
  EXPECT_EQ(module_.tried["port"], 81);
  EXPECT_EQ(Find<QLabel>("ResultHead")->text(), QStringLiteral("Passed"));
  EXPECT_EQ(Find<QPlainTextEdit>("ResultText")->toPlainText(), QStringLiteral("All is well."));
  EXPECT_TRUE(dialog_->isVisible());
}

TEST_F(FormDialogTest, ClosingLeavesARunningTrialBehind) {
  std::promise<void> gate;
  module_.hold = gate.get_future().share();
  Open();
  Click("TryButton");
  ASSERT_TRUE(QTest::qWaitFor([&] { return module_.trials == 1; }));
  Click("CancelButton");
  EXPECT_EQ(dialog_->result(), QDialog::Rejected);
  dialog_.reset();
  gate.set_value();
  EXPECT_TRUE(QTest::qWaitFor([&] { return module_.left == 1; }));
}

TEST(FormSizeTest, ANoteOfSeveralLinesAndAReportHideNoField) {
  const kit::Form form{"", "Short", {{.key = "name", .label = "Name", .help = "Help."}}};
  std::string note = "A note";
  while (note.size() < 300) note += " that takes several lines";
  Module module;
  FormDialog dialog(ReadForm(kit::FormText(form, note, ""), R"({"name":""})"), module.Calls(), 1000);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  auto* button = dialog.findChild<QPushButton*>(QStringLiteral("TryButton"));
  button->click();
  ASSERT_TRUE(QTest::qWaitFor([&] { return button->isEnabled(); }));
  QCoreApplication::processEvents();
  EXPECT_EQ(dialog.findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0);
}

TEST(FormSizeTest, ATallFormScrollsAndAShortOneDoesNot) {
  for (const int count : {3, 150}) {
    kit::Form form{"", "Many", {}};
    Json values = Json::object();
    for (int at = 0; at < count; ++at) {
      form.fields.push_back({.key = "k" + std::to_string(at), .label = "Field"});
      values[form.fields.back().key] = "";
    }
    FormDialog dialog(ReadForm(kit::FormText(form, "", ""), values.dump()), {}, 100000);
    EXPECT_EQ(dialog.findChild<QPushButton*>(QStringLiteral("TryButton")), nullptr);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_LE(dialog.height(), dialog.screen()->availableGeometry().height());
    const auto* scroll = dialog.findChild<QScrollArea*>();
    EXPECT_EQ(scroll->verticalScrollBar()->maximum() > 0, count == 150);
    EXPECT_LE(scroll->widget()->minimumSizeHint().width(), scroll->viewport()->width());
  }
}

}  // namespace
}  // namespace quarl::forms
