#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QRegularExpression>
#include <QTest>
#include <QToolButton>

#include "shell/MainFixture.h"
#include "support/FaultyStores.h"
#include "tree/TreeDrag.h"

namespace quarl::shell {
namespace {

// Groups 1 "Berlin" and 2 "Moscow"; server 3 "alpha" in Berlin with test 1 and alert 1; server 4 "omega" in the root.
class CommandsTest : public MainFixture {
 protected:
  CommandsTest() {
    InstallTypes();
    EXPECT_TRUE(stores_.System().AddAlertType(Q(QUARL_LAYOUT_DIR "/plugins/alerts/webhook.dll"), QString()));
    for (const char* name : {"Berlin", "Moscow"}) EXPECT_GT(stores_.Groups().AddGroup(Q(name), {}), 0);
    EXPECT_EQ(AddServer("alpha", 1), 3);
    EXPECT_EQ(AddServer("omega"), 4);
    EXPECT_EQ(stores_.Tests().AddTest(3, 1, {}), 1);
    EXPECT_EQ(stores_.Alerts().AddServerAlert(3, 1, {}), 1);
    window_ = std::make_unique<Main>(faulty_, InstallPaths(Folder()));
    window_->Form_Load();
    window_->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
    window_->activateWindow();
  }
  ~CommandsTest() override { window_.reset(); }

  void ClickButton(const char* key) const {
    QTest::mouseClick(window_->findChild<QToolButton*>(Q(key)), Qt::LeftButton);
  }
  // As a user: what is grey cannot be chosen.
  void Choose(const char* item) const {
    ASSERT_TRUE(Action(Q(item))->isEnabled()) << item;
    Action(Q(item))->trigger();
  }
  QPoint NodePoint(const char* key) const {
    Tree().EnsureVisible(Q(key));
    return Tree().visualRect(Tree().Nodes().IndexOf(Q(key))).center();
  }
  QPoint RowPoint(int row) const { return List().visualRect(List().Rows().index(row, 0)).center(); }
  void ClickRow(int row, Qt::MouseButton button = Qt::LeftButton) const {
    QTest::mouseClick(List().viewport(), button, {}, RowPoint(row));
  }
  void ExpectQuestion(const char* text, const char* answer = "NoButton") {
    dialogs_.ExpectBox({Q("warning"), Q("Warning"), Q(text)}, Q(answer));
  }
  // The name of the menu that has popped up, which is closed then.
  static QString TakePopUp() {
    const QPointer<QWidget> menu = QApplication::activePopupWidget();
    if (!menu) return {};
    menu->close();
    return menu->objectName();
  }
  int Refills() const {
    return faulty_.Calls(Q("ServerStore.GetAllServers")) + faulty_.Calls(Q("ServerStore.GetServersByGroup")) +
           faulty_.Calls(Q("TestStore.GetTestsByServer")) + faulty_.Calls(Q("LogStore.GetLogs"));
  }
  static QString Outline(const tree::ObjectTreeModel& nodes, const QString& key = {}) {
    QString text = key + u'=' + (key.isEmpty() ? QString() : nodes.TextOf(key)) + u'(';
    for (const QString& child : nodes.ChildrenOf(key)) text += Outline(nodes, child);
    return text + u')';
  }
  void ExpectTreeLikeFresh() {
    Main fresh(stores_, InstallPaths(Folder()));
    fresh.Form_Load();
    const auto* tree = static_cast<tree::ObjectTree*>(fresh.findChild<QTreeView*>(Q("KVCTree")));
    EXPECT_EQ(Outline(Tree().Nodes()).toStdString(), Outline(tree->Nodes()).toStdString());
  }

  store::FaultyStores faulty_{stores_};
};

// What a command brings up or calls: a dialog by its name, a question by its text, or a store operation.
struct Way {
  const char* node;
  const char* button;  ///< "" = none
  const char* item;    ///< "" = none
  const char* dialog;
  const char* question;
  const char* operation;
};

const Way kWays[] = {
    {"_GROUP_0", "GroupAdd", "mGroupAdd", "pGroup", "", ""},
    {"_GROUP_0", "Properties", "mGroupProperties", "pGroup", "", ""},
    {"_GROUP_1", "Properties", "mGroupProperties", "pGroup", "", ""},
    {"_GROUP_1", "GroupSub", "mGroupRemove", "", "Are you sure to remove definitely this group?", ""},
    {"_GROUP_1", "ServerAdd", "mGroupAddServer", "pServer", "", ""},
    {"_SERVER_3", "Properties", "mServerProperties", "pServer", "", ""},
    {"_SERVER_3", "ServerSub", "mServerRemove", "", "Are you sure to remove definitely this server?", ""},
    {"_TEST_1", "TestSub", "mTestRemove", "", "Are you sure to remove definitely this test?", ""},
    {"_ALERT_1", "AlertSub", "mAlertRemove", "", "Are you sure to remove definitely this alert?", ""},
    {"_GROUP_0", "CheckGroup", "mGroupCheck", "", "", "GroupStore.CheckGroup"},
    {"_SERVER_3", "CheckServer", "mServerCheck", "", "", "ServerStore.CheckServer"},
    {"_TEST_1", "CheckTest", "mTestCheck", "", "", "TestStore.CheckTest"},
    {"_GROUP_0", "Refresh", "", "", "", "ServerStore.GetAllServers"},
    {"_GROUP_1", "Refresh", "", "", "", "ServerStore.GetServersByGroup"},
    {"_SERVER_3", "Refresh", "", "", "", "TestStore.GetTestsByServer"},
    {"_LOG", "Refresh", "", "", "", "LogStore.GetLogs"},
    {"_LOG", "SStart", "", "", "", "SystemConfig.StartService"},
    {"_LOG", "SStop", "", "", "", "SystemConfig.StopService"},
    {"_LOG", "", "mLogClear", "", "Are you sure to delete definitely the logs?", ""},
    {"_LOG", "", "mLogSave", "CommonDialog", "", ""},
};

class WayTest : public CommandsTest, public ::testing::WithParamInterface<Way> {
 protected:
  void ExpectCommand(const std::function<void()>& act) {
    const Way& way = GetParam();
    const QString operation = Q(way.operation);
    const int before = faulty_.Calls(operation);
    if (*way.dialog != 0) dialogs_.Expect(Q(way.dialog), [](QWidget& dialog) { dialog.close(); });
    if (*way.question != 0) ExpectQuestion(way.question);
    act();
    dialogs_.Verify();
    if (*way.operation != 0) {
      EXPECT_EQ(faulty_.Calls(operation), before + 1);
    }
  }
};

TEST_P(WayTest, LeadsToItsCommand) {
  const store::Configuration before = stores_.Configurations().Read().configuration;
  ClickNode(Q(GetParam().node));
  if (*GetParam().button != 0) ExpectCommand([&] { ClickButton(GetParam().button); });
  if (*GetParam().item != 0) ExpectCommand([&] { Choose(GetParam().item); });
  EXPECT_TRUE(stores_.Configurations().Read().configuration == before) << "nothing was confirmed";
}

INSTANTIATE_TEST_SUITE_P(Commands, WayTest, ::testing::ValuesIn(kWays), [](const auto& row) {
  const Way& way = row.param;
  return std::string(*way.button != 0 ? way.button : way.item) + way.node;
});

TEST_F(CommandsTest, FacesOfTheDropDownsAndButtonsWithoutKindDoNothing) {
  ClickNode(Q("_SERVER_3"));
  const int calls = faulty_.Calls();
  ClickButton("TestAdd");
  ClickButton("AlertAdd");
  ClickNode(Q("_STESTS_3"));
  Action(Q("Properties"))->setEnabled(true);
  ClickButton("Properties");
  EXPECT_EQ(faulty_.Calls(), calls);
}

// --- Type menus ---

TEST_F(CommandsTest, EntryAndElementOfOnePlaceAddTheSameType) {
  const struct {
    const char* node;
    const char* entry;
    const char* element;
    const char* kind;
    const char* type;
  } cases[] = {{"_SERVER_4", "TEST_1", "mServerTest_1", "_TEST_", "ping"},
               {"_SERVER_4", "TEST_2", "mServerTest_2", "_TEST_", "http"},
               {"_SERVER_4", "ALERT_1", "mServerAlert_1", "_ALERT_", "email"},
               {"_SERVER_4", "ALERT_2", "mServerAlert_2", "_ALERT_", "webhook"},
               {"_GROUP_2", "ALERT_1", "mGroupAlert_1", "_ALERT_", "email"},
               {"_GROUP_0", "ALERT_2", "mGroupAlert_2", "_ALERT_", "webhook"}};
  int added[2] = {1, 1};
  for (const auto& c : cases) {
    for (const char* way : {c.entry, c.element}) {
      SCOPED_TRACE(std::string(c.node) + way);
      ClickNode(Q(c.node));
      Choose(way);
      int& last = added[Q(c.kind) == Q("_TEST_") ? 0 : 1];
      const QString key = Q(c.kind) + QString::number(++last);
      ASSERT_TRUE(Tree().Nodes().Contains(key));
      EXPECT_EQ(Tree().Nodes().TextOf(key), Q(c.type));
      EXPECT_EQ(Tree().Nodes().ParentOf(Tree().Nodes().ParentOf(key)), Q(c.node));
    }
  }
  ExpectTreeLikeFresh();
}

// The alert that was added is the tree's selected node, but the commands are still those of its owner.
TEST_F(CommandsTest, AlertsCanBeAddedOneAfterTheOther) {
  for (const char* owner : {"_GROUP_2", "_GROUP_0", "_SERVER_4"}) {
    ClickNode(Q(owner));
    for (const char* entry : {"ALERT_1", "ALERT_2"}) Choose(entry);
    const QString folder = Q(owner).replace(QRegularExpression(Q("_(GROUP|SERVER)_")), Q("_ALERTS_"));
    EXPECT_EQ(Tree().Nodes().ChildrenOf(folder).size(), 2) << owner;
  }
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, AlertEntriesGoToTheSelectedKey) {
  ClickNode(Q("_GROUP_0"));
  ClickRow(1);  // omega
  ASSERT_EQ(Window().SelectedKey(), Q("_SERVER_4"));
  Choose("ALERT_1");
  EXPECT_EQ(Tree().Nodes().ParentOf(Q("_ALERT_2")), Q("_ALERTS_4"));
  for (const char* other : {"_TEST_1", "_ALERT_1", "_LOG", "_STESTS_3"}) {
    ClickNode(Q(other));
    const int calls = faulty_.Calls();
    Action(Q("ALERT_1"))->trigger();
    EXPECT_EQ(faulty_.Calls(), calls) << other;
  }
}

// --- Acts that change the store ---

TEST_F(CommandsTest, RemovedNodesAreGoneAfterYes) {
  const struct {
    const char* node;
    const char* item;
  } cases[] = {{"_TEST_1", "mTestRemove"},
               {"_ALERT_1", "mAlertRemove"},
               {"_SERVER_3", "mServerRemove"},
               {"_GROUP_1", "mGroupRemove"}};
  for (const auto& c : cases) {
    ClickNode(Q(c.node));
    dialogs_.ExpectAnyBox(Q("YesButton"));
    Choose(c.item);
    EXPECT_FALSE(Tree().Nodes().Contains(Q(c.node))) << c.node;
  }
  EXPECT_TRUE(Tree().Nodes().ChildrenOf(Q("_GROUP_0")).contains(Q("_SERVER_4")));
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, TestsAndAlertsAreRenamedInPlace) {
  const struct {
    const char* node;
    const char* item;
  } cases[] = {{"_TEST_1", "mTestRename"}, {"_ALERT_1", "mAlertRename"}};
  const QString name = Q("Käse & <b>Brot</b>");
  for (const auto& c : cases) {
    ClickNode(Q(c.node));
    for (const Qt::Key end : {Qt::Key_Escape, Qt::Key_Return}) {
      Choose(c.item);
      auto* editor = Tree().viewport()->findChild<QLineEdit*>();
      ASSERT_NE(editor, nullptr);
      editor->setText(name);
      QTest::keyClick(editor, end);
      EXPECT_TRUE(QTest::qWaitFor([&] { return Tree().viewport()->findChild<QLineEdit*>() == nullptr; }));
      EXPECT_EQ(Tree().Nodes().TextOf(Q(c.node)) == name, end == Qt::Key_Return) << c.item;
    }
  }
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, LongNamesAreNotCutByTheEditor) {
  const QString name(40000, u'n');
  ASSERT_TRUE(stores_.Tests().RenameTest(1, name));
  Tree().Nodes().SetText(Q("_TEST_1"), name);
  ClickNode(Q("_TEST_1"));
  Choose("mTestRename");
  auto* editor = Tree().viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  QTest::keyClick(editor, Qt::Key_End);
  QTest::keyClick(editor, Qt::Key_X);
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Tree().viewport()->findChild<QLineEdit*>() == nullptr; }));
  EXPECT_TRUE(Tree().Nodes().TextOf(Q("_TEST_1")) == name + u'x');
}

TEST_F(CommandsTest, WindowCanGoWhileANameIsEdited) {
  ClickNode(Q("_TEST_1"));
  Choose("mTestRename");
  auto* editor = Tree().viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  editor->setText(Q("half a na"));
  window_.reset();
  EXPECT_EQ(faulty_.Calls(Q("TestStore.RenameTest")), 0);
}

TEST_F(CommandsTest, RenameThatFailsKeepsTheName) {
  faulty_.ThrowFrom(Q("TestStore.RenameTest"));
  ClickNode(Q("_TEST_1"));
  Choose("mTestRename");
  auto* editor = Tree().viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  editor->setText(Q("other"));
  dialogs_.ExpectBox({Q("message"), Q("Quarl Console"), Q("store fault(Main:KVCTree_AfterLabelEdit)")}, Q("OKButton"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Tree().viewport()->findChild<QLineEdit*>() == nullptr; }));
  dialogs_.Verify();
  EXPECT_EQ(Tree().Nodes().TextOf(Q("_TEST_1")), Q("ping"));
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, DraggedNodesMoveInStoreAndTree) {
  const struct {
    const char* dragged;
    const char* target;
  } cases[] = {{"_SERVER_3", "_GROUP_2"}, {"_ALERT_1", "_GROUP_2"}};
  for (const auto& c : cases) {
    QMimeData data;
    data.setData(tree::TreeDrag::Format(), c.dragged);
    QTest::mousePress(Tree().viewport(), Qt::LeftButton, {}, NodePoint(c.dragged));
    const QPoint point = NodePoint(c.target);
    QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(Tree().viewport(), &enter);
    QDragMoveEvent move(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(Tree().viewport(), &move);
    EXPECT_TRUE(move.isAccepted());
    QDropEvent drop(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(Tree().viewport(), &drop);
    QTest::mouseRelease(Tree().viewport(), Qt::LeftButton, {}, QPoint(2, 2));
  }
  EXPECT_EQ(stores_.Servers().GetServer(3)->idGroup, 2);
  EXPECT_EQ(Tree().Nodes().ParentOf(Q("_ALERT_1")), Q("_ALERTS_2"));
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, ClearedLogShowsItsOneRecord) {
  stores_.Log().AddLog(3, Q("old"));
  ClickNode(Q("_LOG"));
  ExpectQuestion("Are you sure to delete definitely the logs?", "YesButton");
  Choose("mLogClear");
  ASSERT_EQ(List().Rows().rowCount(), 1);
  EXPECT_EQ(List().Rows().index(0, 0).data().toString(), Q("The log has been cleared successfully."));
}

// --- Keys ---

TEST_F(CommandsTest, KeysActOnTheTreesSelectedNode) {
  const struct {
    const char* node;
    const char* question;
  } cases[] = {{"_GROUP_1", "Are you sure to remove definitely this group?"},
               {"_SERVER_3", "Are you sure to remove definitely this server?"},
               {"_TEST_1", "Are you sure to remove definitely this test?"},
               {"_ALERT_1", "Are you sure to remove definitely this alert?"},
               {"_GROUP_0", ""},
               {"_STESTS_3", ""},
               {"_LOG", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.node);
    ClickNode(Q(c.node));
    if (*c.question != 0) ExpectQuestion(c.question);
    QTest::keyClick(&Tree(), Qt::Key_Delete);
    if (*c.question != 0) ExpectQuestion(c.question);
    QTest::keyClick(&Tree(), Qt::Key_Period, Qt::KeypadModifier);
    dialogs_.Verify();
  }
}

// A row in the list is the selected key; Delete in the tree is still about the node that the tree shows as selected.
TEST_F(CommandsTest, DeleteRemovesTheNodeAndNotTheClickedRow) {
  ClickNode(Q("_GROUP_1"));
  ClickRow(0);
  ASSERT_EQ(Window().SelectedKey(), Q("_SERVER_3"));
  QTest::keyClick(&List(), Qt::Key_Delete);
  ExpectQuestion("Are you sure to remove definitely this group?", "YesButton");
  QTest::keyClick(&Tree(), Qt::Key_Delete);
  EXPECT_FALSE(Tree().Nodes().Contains(Q("_GROUP_1")));
  ExpectTreeLikeFresh();
}

TEST_F(CommandsTest, F5ReadsTheListAgain) {
  ClickNode(Q("_GROUP_2"));
  AddServer("late", 2);
  QTest::keyClick(&Tree(), Qt::Key_F5);
  EXPECT_EQ(List().Rows().rowCount(), 1);
  AddServer("later", 2);
  ClickRow(0);
  QTest::keyClick(&List(), Qt::Key_F5);
  EXPECT_EQ(List().Rows().rowCount(), 2);
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_2"));
}

// Everything else is in the menu bar as well.
TEST_F(CommandsTest, ServiceIsStartedAndStoppedByKeyboard) {
  for (const char* name : {"SStart", "SStop"}) {
    auto* button = window_->findChild<QToolButton*>(Q(name));
    Tree().setFocus();
    for (int tabs = 0; tabs < 20 && !button->hasFocus(); ++tabs)
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(button->hasFocus()) << name;
    QTest::keyClick(button, Qt::Key_Space);
  }
  EXPECT_EQ(service_.starts, 1);
  EXPECT_EQ(service_.stops, 1);
}

// --- Mouse in the list, pop-up menus ---

TEST_F(CommandsTest, ClicksInTheListChooseAndOpenServers) {
  ClickNode(Q("_GROUP_0"));
  const int refills = Refills();
  ClickRow(0);
  EXPECT_EQ(Window().SelectedKey(), Q("_SERVER_3"));
  EXPECT_EQ(Tree().SelectedKey(), Q("_GROUP_0"));
  EXPECT_TRUE(Action(Q("mServerRemove"))->isEnabled());
  EXPECT_EQ(Refills(), refills);
  QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, RowPoint(0));
  EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_3"));
  EXPECT_TRUE(Tree().isExpanded(Tree().Nodes().IndexOf(Q("_SERVER_3"))));
  EXPECT_EQ(Refills(), refills + 1);
  ASSERT_EQ(List().Rows().KeyOf(List().Rows().index(0, 0)), Q("_TEST_1"));
  ClickRow(0);
  EXPECT_TRUE(Action(Q("mTestRemove"))->isEnabled());
  EXPECT_EQ(Window().SelectedKey(), Q("_TEST_1"));
}

TEST_F(CommandsTest, RightButtonShowsTheMenuOfTheNodeAndSelectsNothing) {
  ClickNode(Q("_GROUP_2"));
  const struct {
    const char* node;
    const char* menu;
  } cases[] = {{"_GROUP_0", "mGroup"}, {"_GROUP_1", "mGroup"}, {"_SERVER_3", "mServer"}, {"_TEST_1", "mTest"},
               {"_ALERT_1", "mAlert"}, {"_LOG", "mLog"},       {"_STESTS_3", ""},        {"_ALERTS_3", ""}};
  const QSet<QString> enabled = EnabledItems();
  for (const auto& c : cases) {
    QTest::mouseClick(Tree().viewport(), Qt::RightButton, {}, NodePoint(c.node));
    EXPECT_EQ(TakePopUp(), Q(c.menu)) << c.node;
    EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_2"));
    EXPECT_EQ(Tree().SelectedKey(), Q("_GROUP_2"));
  }
  EXPECT_EQ(EnabledItems(), enabled);
}

TEST_F(CommandsTest, RightButtonInTheListChoosesTheRow) {
  stores_.Log().AddLog(1, Q("a record"));
  const struct {
    const char* node;
    const char* key;
    const char* menu;
  } cases[] = {{"_GROUP_1", "_SERVER_3", "mServer"}, {"_SERVER_3", "_TEST_1", "mTest"}, {"_LOG", "", ""}};
  for (const auto& c : cases) {
    ClickNode(Q(c.node));
    QTest::mouseClick(List().viewport(), Qt::RightButton, {}, QPoint(5, List().viewport()->height() - 3));
    EXPECT_EQ(TakePopUp(), QString());
    EXPECT_EQ(Window().SelectedKey(), Q(c.node));
    ClickRow(0, Qt::RightButton);
    EXPECT_EQ(TakePopUp(), Q(c.menu)) << c.node;
    EXPECT_EQ(Window().SelectedKey(), Q(c.key));
  }
}

TEST_F(CommandsTest, MenuKeyShowsTheMenuOfWhatIsSelected) {
  const auto press = [](QAbstractScrollArea& view) {
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), view.mapToGlobal(QPoint(1, 1)));
    QCoreApplication::sendEvent(&view, &event);
  };
  ClickNode(Q("_GROUP_1"));
  press(Tree());
  EXPECT_EQ(TakePopUp(), Q("mGroup"));
  press(List());
  EXPECT_EQ(TakePopUp(), QString());
  ClickRow(0);
  press(List());
  EXPECT_EQ(TakePopUp(), Q("mServer"));
  press(Tree());
  EXPECT_EQ(TakePopUp(), Q("mGroup"));
  EXPECT_TRUE(Action(Q("mGroupRemove"))->isEnabled()) << "the menu is about the node, not about the row";
}

// --- Failures ---

TEST_F(CommandsTest, UnreachableStoreIsReportedByTheProcedureOrNotAtAll) {
  const struct {
    const char* node;
    const char* action;
    const char* answer;  ///< to the question that comes first; "" = none
    const char* tag;     ///< "" = silent
  } cases[] = {{"_GROUP_0", "Refresh", "", "(Main:UpdateOptions)"},
               {"_LOG", "SStart", "", "(Main:KVCToolbar_ButtonClick)"},
               {"_SERVER_3", "ALERT_1", "", "(Main:mServerAlert_Click)"},
               {"_GROUP_1", "ALERT_1", "", "(Main:mGroupAlert_Click)"},
               {"_GROUP_1", "mGroupRemove", "YesButton", "(Main:mGroupRemove_Click)"},
               {"_SERVER_3", "mServerRemove", "YesButton", ""},
               {"_LOG", "mLogClear", "YesButton", ""}};
  const store::Configuration before = stores_.Configurations().Read().configuration;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.action);
    ClickNode(Q(c.node));
    faulty_.ThrowAlways();
    if (*c.answer != 0) dialogs_.ExpectAnyBox(Q(c.answer));
    if (*c.tag != 0) {
      dialogs_.ExpectBox({Q("message"), Q("Quarl Console"), Q("store fault") + Q(c.tag)}, Q("OKButton"));
    }
    Choose(c.action);
    dialogs_.Verify();
    faulty_.Heal();
  }
  EXPECT_TRUE(stores_.Configurations().Read().configuration == before);
  ExpectTreeLikeFresh();
}

}  // namespace
}  // namespace quarl::shell
