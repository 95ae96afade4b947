#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include "plugins/ModulePicture.h"
#include "shell/MainFixture.h"

namespace quarl::shell {
namespace {

class StartUpTest : public MainFixture {
 protected:
  // Starts on something that keeps the images from being loaded: one message, and an empty window that can be used.
  void ExpectFailure(const QString& partOfMessage) {
    dialogs_.ExpectAnyBox();
    Start();
    ASSERT_EQ(dialogs_.Boxes().size(), 1U);
    const testing::ShownBox box = dialogs_.Boxes()[0];
    EXPECT_EQ(box.kind, Q("message"));
    EXPECT_EQ(box.title, Q("Quarl Console"));
    EXPECT_TRUE(box.text.contains(partOfMessage)) << box;
    EXPECT_TRUE(box.text.endsWith(Q("(Main:LoadImages)"))) << box;
    EXPECT_EQ(Tree().Nodes().Count(), 0U);
    EXPECT_EQ(List().model()->columnCount(), 0);
    EXPECT_EQ(Action(Q("mServerTest_1"))->text(), QString());
    EXPECT_EQ(Window().SelectedKey(), QString());
    EXPECT_EQ(Window().cursor().shape(), Qt::ArrowCursor);
    EXPECT_TRUE(Action(Q("mQuit"))->isEnabled());
    EXPECT_FALSE(Action(Q("GroupAdd"))->icon().pixmap(QSize(24, 24)).isNull());
  }
};

TEST_F(StartUpTest, OpensWithTheRootGroupSelectedAndListed) {
  InstallTypes();
  const qint32 group = stores_.Groups().AddGroup(Q("Office"), QString());
  AddServer("alpha", group);
  AddServer("beta");
  Start();
  EXPECT_EQ(Tree().Nodes().ChildrenOf({}), QStringList(Words("_GROUP_0 _LOG")));
  EXPECT_EQ(Tree().SelectedKey(), Q("_GROUP_0"));
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_0"));
  EXPECT_EQ(List().model()->rowCount(), 2);
  EXPECT_TRUE(Action(Q("mGroupAdd"))->isEnabled());
  EXPECT_FALSE(Action(Q("mGroupRemove"))->isEnabled());
  EXPECT_EQ(Window().cursor().shape(), Qt::ArrowCursor);
}

TEST_F(StartUpTest, AnEmptyStoreHasTwoNodesAndNoTypes) {
  Start();
  EXPECT_EQ(Tree().Nodes().Count(), 2U);
  EXPECT_EQ(List().model()->columnCount(), 3);
  EXPECT_EQ(List().model()->rowCount(), 0);
}

TEST_F(StartUpTest, AMissingModuleIsNamed) {
  InstallTypes();
  ASSERT_TRUE(QFile::remove(Folder("/plugins/tests/http.dll")));
  ExpectFailure(Folder("/plugins/tests/http.dll"));
}

TEST_F(StartUpTest, AModuleWithoutPictureIsNamed) {
  InstallTypes();
  QFile module(Folder("/plugins/alerts/email.dll"));
  module.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
  ASSERT_TRUE(module.open(QIODevice::WriteOnly | QIODevice::Truncate));
  module.write("no module at all");
  module.close();
  ExpectFailure(Folder("/plugins/alerts/email.dll"));
}

TEST_F(StartUpTest, AStoreThatCannotBeReachedIsReportedAndTheWindowLives) {
  QDir().mkpath(Folder("/store.db"));
  ExpectFailure(Folder("/store.db"));
  dialogs_.Expect(Q("frmAbout"), testing::DialogDriver::Click(Q("OKButton")));
  Action(Q("mAbout"))->trigger();
  dialogs_.ExpectAnyBox();
  Window().LoadMenu();
}

TEST_F(StartUpTest, AListThatCannotBeReadIsReported) {
  const qint32 group = stores_.Groups().AddGroup(Q("Office"), QString());
  Start();
  ASSERT_TRUE(QFile::remove(Folder("/store.db")));
  dialogs_.ExpectError(Q("(Main:UpdateOptions)"));
  ClickNode(NodeKey::Make(NodeKind::Group, group));
  EXPECT_EQ(List().model()->columnCount(), 2);
  EXPECT_TRUE(Action(Q("mGroupRemove"))->isEnabled());
}

TEST_F(StartUpTest, AMessageMayOutliveTheSplash) {
  QDir().mkpath(Folder("/store.db"));
  dialogs_.Expect(Q("PlainBox"), [](QWidget& box) {
    QPointer<QWidget> splash;
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == Q("frmSplash")) splash = window;
    }
    ASSERT_FALSE(splash.isNull());
    splash->findChild<QTimer*>(Q("closeTimer"))->start(0);
    QTRY_VERIFY_WITH_TIMEOUT(splash.isNull(), 2000);
    testing::DialogDriver::Click(Q("OKButton"))(box);
  });
  Start();
  QCoreApplication::processEvents();
  EXPECT_TRUE(Window().isVisible());
}

TEST_F(StartUpTest, TheTreeShowsThePicturesOfTheModules) {
  InstallTypes();
  const qint32 server = AddServer("alpha");
  const QString test = NodeKey::Make(NodeKind::Test, stores_.Tests().AddTest(server, 2, QString()));
  Start();
  EXPECT_EQ(Tree().Nodes().ImageKeyOf(test), Q("iTEST2"));
  const QImage picture = plugins::LoadModulePicture(Folder("/plugins/tests/http.dll")).toImage();
  ASSERT_FALSE(picture.isNull());
  const auto icon = Tree().Nodes().IndexOf(test).data(Qt::DecorationRole).value<QIcon>();
  EXPECT_EQ(icon.pixmap(picture.size(), 1.0).toImage(), picture);
}

TEST_F(StartUpTest, LoadingImagesAgainFailsOnTheFirstKey) {
  Start();
  dialogs_.ExpectAnyBox();
  EXPECT_FALSE(Window().LoadImages());
  EXPECT_TRUE(dialogs_.Boxes()[0].text.contains(Q("iSERVERGROUP")));
}

}  // namespace
}  // namespace quarl::shell
