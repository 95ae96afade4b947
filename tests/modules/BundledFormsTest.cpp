#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QScreen>
#include <QScrollBar>
#include <QtTest>

#include "forms/FormDialog.h"
#include "modules/ModuleDriver.h"
#include "ui/ColourScheme.h"

namespace quarl::forms {
namespace {

using testing::ModuleDriver;

/// Leaves pictures of the dialogs in the folder that QUARL_FORM_PICTURES names, for people to look at; dark ones with
/// QUARL_FORM_DARK.
void Picture(FormDialog& dialog, const std::string& name) {
  const QString folder = qEnvironmentVariable("QUARL_FORM_PICTURES");
  if (folder.isEmpty()) return;
  dialog.grab().save(QDir(folder).filePath(QString::fromStdString(name) + QStringLiteral(".png")));
}

class BundledFormsTest : public ::testing::TestWithParam<const char*> {};

TEST_P(BundledFormsTest, EachFormCanBeShownAndComesBackAsItWas) {
  const std::string path = GetParam();
  if (qEnvironmentVariableIsSet("QUARL_FORM_DARK")) QApplication::setPalette(ui::DarkPalette());
  ModuleDriver module(path);
  for (const std::string& stored : {std::string(), std::string("broken")}) {
    const auto edited = module.SetProperties(stored, [&](ModuleDriver::OpenForm& form) {
      FormRequest request = ReadForm(form.form.dump(), form.values.dump());
      EXPECT_FALSE(request.form.title.empty());
      EXPECT_EQ(request.note.empty(), stored.empty());
      FormDialog dialog(std::move(request), {}, 1 << 20);
      dialog.show();
      EXPECT_TRUE(QTest::qWaitForWindowExposed(&dialog));
      const auto* const fields = dialog.findChild<QScrollArea*>();
      const int hidden = fields->verticalScrollBar()->maximum();
      EXPECT_EQ(fields->horizontalScrollBar()->maximum(), 0);
      EXPECT_TRUE(hidden == 0 || dialog.height() > dialog.screen()->availableGeometry().height() * 8 / 10);
      Picture(dialog, path.substr(path.find('/') + 1) + (stored.empty() ? "" : "-note"));
      form.values = dialog.Values();
      return int16_t{0};
    });
    if (edited.result == 0) {
      EXPECT_EQ(testing::Json::parse(edited.properties)["format"], 1);
    }
  }
  EXPECT_NE(module.About().second, "");
}

INSTANTIATE_TEST_SUITE_P(All, BundledFormsTest,
                         ::testing::Values("tests/ping", "tests/tcpport", "tests/http", "tests/monitoringplugin",
                                           "tests/dns", "tests/local", "alerts/email", "alerts/webhook",
                                           "alerts/command", "alerts/desktop", "alerts/syslog"),
                         [](const auto& test) {
                           const std::string path = test.param;
                           return path.substr(path.find('/') + 1);
                         });

}  // namespace
}  // namespace quarl::forms
