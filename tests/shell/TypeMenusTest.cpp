#include <QMenu>
#include <QScreen>
#include <QToolBar>
#include <QToolButton>

#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

class TypeMenusTest : public MainFixture {
 protected:
  // "name=caption#id" of each entry of a menu; drop-down entries carry no id.
  QString Entries(const char* owner) const {
    QStringList lines;
    for (const QAction* entry : Action(Q(owner))->menu<QMenu*>()->actions()) {
      QString line = entry->objectName() + u'=' + entry->text();
      if (entry->data().isValid()) line += u'#' + entry->data().toString();
      lines.append(line);
    }
    return lines.join(u' ');
  }

  QString AllEntries() const {
    QStringList menus;
    for (const char* owner : {"mServerAddTest", "mServerAddAlert", "mGroupAddAlert", "TestAdd", "AlertAdd"}) {
      menus.append(Entries(owner));
    }
    return menus.join(u'\n');
  }

  static QString ModuleOf(const QString& name) { return QString::number(qHash(name)) + Q(".dll"); }

  // Types under names of the test's own.
  void NameTypes(const QStringList& tests, const QStringList& alerts) {
    store::ConfigurationSnapshot snapshot = stores_.Configurations().Read();
    for (const QString& name : tests) snapshot.configuration.testTypes.push_back({0, name, ModuleOf(name)});
    for (const QString& name : alerts) snapshot.configuration.alertTypes.push_back({0, name, ModuleOf(name)});
    stores_.Configurations().Write(snapshot.configuration, snapshot.revision);
  }
};

const char* const kNone = "mServerTest_1=\nmServerAlert_1=\nmGroupAlert_1=\n\n";

TEST_F(TypeMenusTest, WithoutTypesTheFirstElementsStayEmpty) {
  Start();
  EXPECT_EQ(AllEntries().toStdString(), kNone);
  Window().LoadMenu();
  EXPECT_EQ(AllEntries().toStdString(), kNone);
  EXPECT_TRUE(Action(Q("mServerAddTest"))->isEnabled());
  EXPECT_TRUE(Action(Q("mServerTest_1"))->isEnabled());
}

TEST_F(TypeMenusTest, FollowTheStoreHoweverOftenTheyAreLoaded) {
  Start();
  NameTypes({Q("Ping"), Q("A & B")}, Words("Mail Page"));
  const char* const entries =
      "mServerTest_1=Ping#1 mServerTest_2=A && B#2\n"
      "mServerAlert_1=Mail#1 mServerAlert_2=Page#2\n"
      "mGroupAlert_1=Mail#1 mGroupAlert_2=Page#2\n"
      "TEST_1=Ping TEST_2=A && B\n"
      "ALERT_1=Mail ALERT_2=Page";
  for (int round = 0; round < 2; ++round) {
    Window().LoadMenu();
    EXPECT_EQ(AllEntries().toStdString(), entries) << round;
    EXPECT_TRUE(Action(Q("mServerTest_1"))->isEnabled());
  }
  ASSERT_TRUE(stores_.System().RemoveTestType(1));
  ASSERT_TRUE(stores_.System().RemoveTestType(2));
  ASSERT_TRUE(stores_.System().RemoveAlertType(2));
  Window().LoadMenu();
  EXPECT_EQ(AllEntries().toStdString(), "mServerTest_1=\nmServerAlert_1=Mail#1\nmGroupAlert_1=Mail#1\n\nALERT_1=Mail");
}

TEST_F(TypeMenusTest, NamesAreOneLineThatFitsTheScreen) {
  Start();
  NameTypes({QString(10000, u'W'), Q("two\nlines\tand a tab")}, {});
  Window().LoadMenu();
  for (const char* owner : {"mServerAddTest", "TestAdd"}) {
    auto* menu = Action(Q(owner))->menu<QMenu*>();
    EXPECT_LT(menu->sizeHint().width(), Window().screen()->availableGeometry().width()) << owner;
    EXPECT_TRUE(menu->actions().at(0)->text().endsWith(QChar(0x2026))) << owner;
    EXPECT_EQ(menu->actions().at(1)->text(), Q("two lines and a tab")) << owner;
  }
}

TEST_F(TypeMenusTest, EnableTheirParentsWhateverIsSelected) {
  Start();
  Window().UpdateOptions(QString(), false);
  Window().LoadMenu();
  for (const char* parent : {"mServerAddTest", "mServerAddAlert", "mGroupAddAlert"}) {
    EXPECT_TRUE(Action(Q(parent))->isEnabled()) << parent;
  }
}

TEST_F(TypeMenusTest, AnErrorIsReported) {
  store::SqlSetup broken{
      .location = store::StoreLocation::File(Folder()), .paths = InstallPaths(Folder()), .inspector = {}};
  store::SqlStores away(broken);
  window_ = std::make_unique<Main>(away, InstallPaths(Folder()), calls_);
  dialogs_.ExpectError(Q("(Main:LoadMenu)"));
  Window().LoadMenu();
}

}  // namespace
}  // namespace quarl::shell
