#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include "plugins/ModuleBuilder.h"
#include "plugins/contract/ModuleFile.h"
#include "plugins/pAlertPlugin.h"
#include "plugins/pTestPlugin.h"
#include "store/StoreFixture.h"
#include "support/DialogDriver.h"
#include "support/FaultyStores.h"
#include "support/ScriptedCalls.h"
#include "support/Text.h"

namespace quarl::plugins {
namespace {

using ::quarl::testing::DialogDriver;

struct Side {
  ModuleKind kind;
  const char* window;
  const char* caption;
  const char* label;
  const char* column;
  const char* folder;
  const char* installed;  ///< a module of the build
  const char* type;       ///< in the names of operations
};

const Side kSides[] = {{ModuleKind::Test, "pTestPlugin", "Test plug-in", "Add or remove test plug-ins", "Test",
                        "\\plugins\\tests\\", "/plugins/tests/ping.dll", "TestType"},
                       {ModuleKind::Alert, "pAlertPlugin", "Alert Plug-in", "Add or remove alert plug-ins", "Alert",
                        "\\plugins\\alerts\\", "/plugins/alerts/email.dll", "AlertType"}};

// The dialog of a kind on a real store whose types are small PE and ELF files. What the user does in it is written as
// an act on the open dialog.
class ManagerDialogTest : public ::testing::TestWithParam<Side> {
 protected:
  ManagerDialogTest() { window_.show(); }

  QString Installed(const QString& file) const { return folder_.Paths().ModuleFolder(GetParam().kind) + u'/' + file; }
  QString File(const char* name, ModuleFormat format, const std::vector<build::Resource>& resources) const {
    return folder_.Write(Q("from/") + Q(name), build::File(format, resources));
  }
  QString Usual(const char* name) const {
    return File(name, ModuleFormat::Pe32, {build::Icon(), build::Version(build::UsualVersion())});
  }
  void Replace(const char* name, const QByteArray& content) const {
    QFile file(Installed(Q(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  void Install(const QString& file) {
    store::SystemConfig& system = sql_.System();
    EXPECT_TRUE(GetParam().kind == ModuleKind::Test ? system.AddTestType(file, {}) : system.AddAlertType(file, {}));
  }
  QString Types(const char* field) {
    const bool tests = GetParam().kind == ModuleKind::Test;
    return store::Column(tests ? sql_.System().GetTestTypes() : sql_.System().GetAlertTypes(), field);
  }
  QString Operation(const char* verb, const char* end = "") const {
    return Q("SystemConfig.") + Q(verb) + Q(GetParam().type) + Q(end);
  }
  /// Opens the dialog, acts on it and closes it with OK.
  void Run(const std::function<void(QDialog&)>& act) {
    dialogs_.Expect(Q(GetParam().window), [&](QWidget& widget) {
      act(static_cast<QDialog&>(widget));
      EXPECT_TRUE(widget.isVisible()) << "stays open";
      DialogDriver::Click(Q("OKButton"))(widget);
    });
    const ManagerContext context{&window_, stores_, paths_, calls_};
    if (GetParam().kind == ModuleKind::Test) {
      pTestPlugin(context).Run();
    } else {
      pAlertPlugin(context).Run();
    }
    dialogs_.Verify();
  }
  static QTreeWidget& List(const QDialog& dialog) { return *dialog.findChild<QTreeWidget*>(Q("pluginList")); }
  static QPushButton& Button(const QDialog& dialog, const char* name) {
    return *dialog.findChild<QPushButton*>(Q(name));
  }
  static void Key(const QDialog& dialog, Qt::Key key) {
    List(dialog).setFocus();
    QTest::keyClick(&List(dialog), key);
  }
  static void Choose(const QDialog& dialog, int row) {
    QTest::mouseClick(List(dialog).viewport(), Qt::LeftButton, {},
                      List(dialog).visualItemRect(List(dialog).topLevelItem(row)).center());
  }
  static void Press(const QDialog& dialog, const char* button) {
    ASSERT_TRUE(Button(dialog, button).isEnabled()) << button;
    QTest::mouseClick(&Button(dialog, button), Qt::LeftButton);
  }
  /// Which of "About" and "RemovePlugin" can be used.
  static std::string Usable(const QDialog& dialog) {
    return std::string(Button(dialog, "About").isEnabled() ? "About " : "") +
           (Button(dialog, "RemovePlugin").isEnabled() ? "Remove" : "");
  }
  /// The cells of each row, joined by "|"; "*" marks a row with a picture, ">" the selected one.
  static QStringList Rows(const QDialog& dialog) {
    QStringList rows;
    for (int i = 0; i < List(dialog).topLevelItemCount(); ++i) {
      const QTreeWidgetItem& item = *List(dialog).topLevelItem(i);
      QStringList cells;
      for (int column = 0; column < item.columnCount(); ++column) cells.append(item.text(column));
      const bool picture = !item.icon(0).pixmap(16, 16).isNull();
      rows.append((item.isSelected() ? Q(">") : QString()) + (picture ? Q("*") : QString()) + cells.join(u'|'));
    }
    return rows;
  }
  void AnswerFileDialog(const QString& file, QDialogButtonBox::StandardButton button = QDialogButtonBox::Open) {
    dialogs_.Expect(Q("CommonDialog"), [=](QWidget& widget) {
      auto& dialog = static_cast<QFileDialog&>(widget);
      EXPECT_EQ(dialog.windowTitle(), Q("Add plugin module"));
      EXPECT_EQ(dialog.nameFilters(), QStringList{Q("Quarl modules (*.dll)")});
      EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
      dialog.findChild<QLineEdit*>(Q("fileNameEdit"))->setText(file);
      dialog.findChild<QDialogButtonBox*>()->button(button)->click();
    });
  }
  void ExpectError(const char* procedure, const char* description = "store fault") {
    const QString tag = Q("(%1:%2)").arg(Q(GetParam().window), Q(procedure));
    dialogs_.ExpectBox({Q("message"), QGuiApplication::applicationDisplayName(), Q(description) + tag});
  }

  store::StoreFolder folder_;
  InstallPaths paths_ = folder_.Paths();
  store::SqlStores sql_{[this] {
    store::SqlSetup setup = folder_.Setup(store::StoreLocation::InMemory());
    setup.inspector = InspectModule;
    return setup;
  }()};
  store::FaultyStores stores_{sql_};
  ::quarl::testing::ScriptedCalls calls_;
  QWidget window_;
  DialogDriver dialogs_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, ManagerDialogTest, ::testing::ValuesIn(kSides),
                         [](const auto& row) { return std::string(row.param.window); });

// --- The list ---

TEST_P(ManagerDialogTest, ListsWhatTheFilesSay) {
  build::VersionNode odd = build::UsualVersion({.productMs = 0x00010002, .productLs = 0x00030004});
  Install(Usual("pe.dll"));
  Install(File("elf.dll", ModuleFormat::Elf64, {build::Icon(), build::Version(odd)}));
  Install(File("bare.dll", ModuleFormat::Pe32Plus, {build::Icon()}));
  for (const char* name : {"faceless.dll", "missing.dll", "broken.dll"}) Install(Usual(name));
  Install(Q(QUARL_LAYOUT_DIR) + Q(GetParam().installed));
  // What has become of some since they were installed.
  ASSERT_TRUE(QFile::remove(Installed(Q("missing.dll"))));
  Replace("faceless.dll", build::File(ModuleFormat::Elf64, {build::Version(build::UsualVersion())}));
  Replace("broken.dll", "no module at all");
  build::VersionNode vast = build::UsualVersion();
  vast.Child(Q("StringFileInfo")).Child(Q("040904B0")).Child(Q("ProductName")).value =
      build::TextBytes(Q("two\nlines ") + QString(5000, u'W'));
  Install(File("vast.dll", ModuleFormat::Pe32, {build::Icon(), build::Version(vast)}));
  const QString file = QFileInfo(Q(GetParam().installed)).fileName();
  const QString product = GetParam().kind == ModuleKind::Test ? Q("Ping") : Q("E-mail");

  Run([&](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), Q(GetParam().caption));
    EXPECT_EQ(dialog.findChild<QLabel*>(Q("lblLabel1"))->text(), Q(GetParam().label));
    QStringList titles;
    for (int i = 0; i < List(dialog).columnCount(); ++i) titles.append(List(dialog).headerItem()->text(i));
    EXPECT_EQ(titles.join(u'|'), Q(GetParam().column) + Q("|Author|Version|DLL|IDTestType"));
    const QStringList rows = Rows(dialog);
    ASSERT_EQ(rows.size(), 8);
    EXPECT_EQ(rows.mid(0, 6).join(u'\n').toStdString(),
              "*Widget|Acme|5.01.260000|pe.dll|1\n"
              "*Widget|Acme|1.02.0304|elf.dll|2\n"
              "*|||bare.dll|3\n"
              "Widget|Acme|5.01.260000|faceless.dll|4\n"
              "|||missing.dll|5\n"
              "|||broken.dll|6");
    EXPECT_TRUE(rows[6].startsWith(u'*' + product + Q("|Quarl|"))) << rows[6].toStdString();
    EXPECT_TRUE(rows[6].endsWith(u'|' + file + Q("|7"))) << rows[6].toStdString();
    EXPECT_TRUE(rows[7].startsWith(Q("*two lines WWW")));
    EXPECT_LT(dialog.width(), dialog.screen()->availableGeometry().width());
  });
}

TEST_P(ManagerDialogTest, CommandsOnARowNeedOne) {
  for (const char* name : {"a.dll", "b.dll"}) Install(Usual(name));
  Run([&](QDialog& dialog) {
    EXPECT_EQ(Usable(dialog), "");
    Key(dialog, Qt::Key_Delete);
    Key(dialog, Qt::Key_Down);
    EXPECT_EQ(Rows(dialog).filter(Q(">")).join(u' '), Q(">*Widget|Acme|5.01.260000|a.dll|1"));
    EXPECT_EQ(Usable(dialog), "About Remove");
    for (const int row : {0, 1}) Choose(dialog, row);
    EXPECT_EQ(Usable(dialog), "About Remove");
    Press(dialog, "About");
    Choose(dialog, 0);
    QTest::mouseDClick(List(dialog).viewport(), Qt::LeftButton, {},
                       List(dialog).visualItemRect(List(dialog).topLevelItem(0)).center());
  });
  const QString call =
      Q("About|") + Q(GetParam().column).toLower() + u'|' + paths_.ApplicationFolder() + Q(GetParam().folder);
  EXPECT_EQ(calls_.calls, (QStringList{call + Q("b.dll"), call + Q("a.dll")}));
}

// --- Adding ---

TEST_P(ManagerDialogTest, AModuleIsAddedAndSelected) {
  Install(Usual("old.dll"));
  const QString file = Usual("new.dll");
  Run([&](QDialog& dialog) {
    Choose(dialog, 0);
    AnswerFileDialog(file, QDialogButtonBox::Cancel);
    Press(dialog, "addPlugin");
    EXPECT_EQ(Rows(dialog).size(), 1);
    AnswerFileDialog(file);
    Press(dialog, "addPlugin");
    EXPECT_EQ(Rows(dialog).join(u'\n').toStdString(),
              "*Widget|Acme|5.01.260000|old.dll|1\n>*Widget|Acme|5.01.260000|new.dll|2");
    EXPECT_EQ(Usable(dialog), "About Remove");
  });
  EXPECT_EQ(Types("Module"), Q("old.dll new.dll"));
  EXPECT_EQ(Types(GetParam().type), Q("old Widget"));
  EXPECT_EQ(store::BytesOf(Installed(Q("new.dll"))), store::BytesOf(file));
}

TEST_P(ManagerDialogTest, ARefusedModuleChangesNothing) {
  Install(Usual("one.dll"));
  const QString refused[] = {Usual("one.dll"), folder_.Write(Q("from/text.dll"), "text"),
                             File("faceless.dll", ModuleFormat::Pe32, {build::Version(build::UsualVersion())})};
  Run([&](QDialog& dialog) {
    for (const QString& file : refused) {
      AnswerFileDialog(file);
      dialogs_.ExpectBox({Q("critical"), QGuiApplication::applicationDisplayName(), Q("Error adding plugin")});
      Press(dialog, "addPlugin");
      EXPECT_EQ(Rows(dialog).size(), 1) << file.toStdString();
    }
  });
  EXPECT_EQ(Types("Module"), Q("one.dll"));
}

// --- Removing ---

TEST_P(ManagerDialogTest, ATypeIsRemovedAfterYes) {
  for (const char* name : {"a.dll", "b.dll", "c.dll"}) Install(Usual(name));
  const ::quarl::testing::ShownBox question{Q("question"), Q("Warning"), Q("Are you sure to remove this plugin?")};
  Run([&](QDialog& dialog) {
    Choose(dialog, 1);
    dialogs_.ExpectBox(question, Q("NoButton"));
    Press(dialog, "RemovePlugin");
    EXPECT_EQ(Types("Module"), Q("a.dll b.dll c.dll"));
    dialogs_.ExpectBox(question, Q("YesButton"));
    Key(dialog, Qt::Key_Delete);
    EXPECT_EQ(Types("Module"), Q("a.dll c.dll"));
    EXPECT_EQ(Rows(dialog).filter(Q(">")).join(u' '), Q(">*Widget|Acme|5.01.260000|c.dll|3"));
    for (int i = 0; i < 2; ++i) {
      dialogs_.ExpectBox(question, Q("YesButton"));
      Press(dialog, "RemovePlugin");
    }
    EXPECT_EQ(Rows(dialog), QStringList());
    EXPECT_EQ(Usable(dialog), "");
  });
  EXPECT_EQ(Types("Module"), QString());
  EXPECT_TRUE(QFile::exists(Installed(Q("a.dll")))) << "the file stays";
}

TEST_P(ManagerDialogTest, ATypeInUseIsNotRemoved) {
  Install(Usual("used.dll"));
  const qint32 server = sql_.Servers().AddServer(Q("alpha"), Q("10.0.0.1"), 0);
  const bool tests = GetParam().kind == ModuleKind::Test;
  ASSERT_GT(tests ? sql_.Tests().AddTest(server, 1, {}) : sql_.Alerts().AddServerAlert(server, 1, {}), 0);
  Run([&](QDialog& dialog) {
    Choose(dialog, 0);
    const int reads = stores_.Calls(Operation("Get", "s"));
    dialogs_.ExpectAnyBox(Q("YesButton"));
    dialogs_.ExpectBox(
        {Q("critical"), Q("Stop"), Q("Impossible remove this plugin. There should be a test configured to use it.")});
    Press(dialog, "RemovePlugin");
    EXPECT_EQ(stores_.Calls(Operation("Get", "s")), reads) << "not rebuilt";
    EXPECT_EQ(Rows(dialog).size(), 1);
  });
}

// --- Errors ---

TEST_P(ManagerDialogTest, ErrorsAreShownWithTheirTagAndTheDialogStays) {
  Install(Usual("a.dll"));
  const QString file = Usual("b.dll");
  stores_.ThrowFrom(Operation("Get", "s"));
  ExpectError("Form_Load");
  Run([&](QDialog& dialog) { EXPECT_EQ(Rows(dialog), QStringList()); });

  stores_.Heal();
  Run([&](QDialog& dialog) {
    Choose(dialog, 0);
    calls_.failing = Q("About");
    ExpectError("About_Click", "module fault");
    Press(dialog, "About");
    stores_.ThrowFrom(Operation("Remove"));
    dialogs_.ExpectAnyBox(Q("YesButton"));
    ExpectError("RemovePlugin_Click");
    Press(dialog, "RemovePlugin");
    stores_.ThrowFrom(Operation("Add"));
    AnswerFileDialog(file);
    ExpectError("addPlugin_Click");
    Press(dialog, "addPlugin");
    EXPECT_EQ(Rows(dialog).size(), 1);
    EXPECT_EQ(Types("Module"), Q("a.dll"));
    stores_.Heal();
    // The list cannot be read again: by the look for the new type, and by the rebuild behind it.
    stores_.ThrowFrom(Operation("Get", "s"), 2);
    AnswerFileDialog(file);
    ExpectError("Form_Load");
    Press(dialog, "addPlugin");
    EXPECT_EQ(Types("Module"), Q("a.dll b.dll"));
    stores_.Heal();
  });
}

}  // namespace
}  // namespace quarl::plugins
