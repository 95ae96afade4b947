#include <dlfcn.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <thread>

#include "quarl_module.h"
#include "support/DialogDriver.h"

namespace quarl::forms {
namespace {

using testing::DialogDriver;

std::string logged;

void Log(int16_t, const char* line) {
  logged = line;
}

constexpr const char* kForm =
    R"({"title":"Probe","fields":[{"key":"port","label":"Port","type":"integer","minimum":1,"maximum":99},
        {"key":"on","label":"On","type":"boolean"}]})";

/// The library as the module host uses it.
class FormsLibraryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    void* library = dlopen(QUARL_LAYOUT_DIR "/quarl-forms.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    open_ = reinterpret_cast<int16_t (*)(QuarlHost*, uint64_t, const char*)>(dlsym(library, "QuarlFormsOpen"));
    ASSERT_NE(open_, nullptr);
    ASSERT_EQ(open_(&host_, 0, "Quarl Console"), 0);
    logged.clear();
  }
  int16_t Show(const char* form, std::string values) {
    values_ = std::move(values);
    values_.resize(values_.size() + 40);
    return host_.ShowForm(form, {values_.data(), static_cast<uint32_t>(values_.size())}, nullptr);
  }
  int16_t (*open_)(QuarlHost*, uint64_t, const char*) = nullptr;
  QuarlHost host_{sizeof(QuarlHost), nullptr, nullptr, &Log, nullptr, 0};
  std::string values_;
};

TEST_F(FormsLibraryTest, TheUserConfirmsOrCancels) {
  DialogDriver dialogs;
  const auto edit = [](const char* button) {
    return [button](QWidget& dialog) {
      dialog.findChild<QSpinBox*>(QStringLiteral("port"))->setValue(42);
      dialog.findChild<QCheckBox*>(QStringLiteral("on"))->click();
      dialog.findChild<QPushButton*>(QString::fromUtf8(button))->click();
    };
  };
  dialogs.Expect(QStringLiteral("ModuleForm"), edit("OKButton"));
  EXPECT_EQ(Show(kForm, R"({"port":7,"on":false})"), 0);
  EXPECT_STREQ(values_.c_str(), R"({"port":42,"on":true})");
  dialogs.Expect(QStringLiteral("ModuleForm"), edit("CancelButton"));
  EXPECT_EQ(Show(kForm, R"({"port":7,"on":false})"), 1);
  EXPECT_STREQ(values_.c_str(), R"({"port":7,"on":false})");
  dialogs.Expect(QStringLiteral("ModuleForm"), [](QWidget& dialog) { dialog.close(); });
  EXPECT_EQ(Show(kForm, R"({"port":7,"on":false})"), 1);
}

TEST_F(FormsLibraryTest, ATextIsShownAsItIs) {
  DialogDriver dialogs;
  dialogs.Expect(QStringLiteral("ModuleText"), [](QWidget& dialog) {
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("About me"));
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("Text"))->text(), QStringLiteral("<b>one</b>\ntwo"));
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("Text"))->textFormat(), Qt::PlainText);
    dialog.findChild<QPushButton*>(QStringLiteral("OKButton"))->click();
  });
  EXPECT_EQ(host_.ShowText("About\nme", "<b>one</b>\ntwo"), 0);
}

TEST_F(FormsLibraryTest, WhatCannotBeShownIsRefusedAndLogged) {
  const DialogDriver dialogs;
  const std::pair<const char*, const char*> rows[] = {
      {"", "{}"}, {"{", "{}"}, {nullptr, "{}"}, {kForm, ""}, {kForm, R"({"port":100,"on":true})"}};
  for (const auto& [form, values] : rows) {
    logged.clear();
    EXPECT_LT(Show(form, values), 0);
    EXPECT_NE(logged, "");
    EXPECT_STREQ(values_.c_str(), values);
  }
  EXPECT_LT(host_.ShowForm(kForm, {nullptr, 0}, nullptr), 0);
  logged.clear();
  std::thread([&] { EXPECT_LT(Show(kForm, R"({"port":7,"on":false})"), 0); }).join();
  EXPECT_NE(logged.find("main"), std::string::npos) << logged;
  QuarlHost small{sizeof(uint32_t), nullptr, nullptr, nullptr, nullptr, 0};
  EXPECT_LT(open_(&small, 0, "x"), 0);
}

TEST_F(FormsLibraryTest, WithoutADisplayTheProcessLivesOn) {
  QProcess probe;
  probe.setProcessEnvironment({});
  probe.start(QStringLiteral(FORMS_PROBE), {QStringLiteral(QUARL_LAYOUT_DIR "/quarl-forms.so"), QStringLiteral("0"),
                                            QString::fromUtf8(kForm), QStringLiteral("{\"port\":7,\"on\":true}")});
  ASSERT_TRUE(probe.waitForFinished());
  EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(probe.readAllStandardOutput().left(2), "-1");
  EXPECT_TRUE(probe.readAllStandardError().contains("no display"));
}

}  // namespace
}  // namespace quarl::forms
