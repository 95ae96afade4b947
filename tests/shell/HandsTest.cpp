#include <QContextMenuEvent>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include "shell/MainFixture.h"

// The user's keys and mouse in tree and list.
namespace quarl::shell {
namespace {

class HandsTest : public FilledFixture {
 protected:
  void ClickBesideRows(Qt::MouseButton button) const {
    QTest::mouseClick(List().viewport(), button, {}, QPoint(30, List().viewport()->height() - 3));
  }
  void DoubleClickRow(int row) const { QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, RowPoint(row)); }
  static void PressMenuKey(QWidget& view) {
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), view.mapToGlobal(QPoint(1, 1)));
    QCoreApplication::sendEvent(&view, &event);
  }
};

// --- Names ---

TEST_F(HandsTest, TestsAndAlertsAreRenamedInPlace) {
  const QString name = Q("Käse & <b>Brot</b> \\ 1");
  for (const auto& [node, item] : {std::pair("_TEST_2", "mTestRename"), std::pair("_ALERT_1", "mAlertRename")}) {
    Click(node);
    EXPECT_EQ(Statements([&, item = item] { Rename(name, Qt::Key_Escape, item); }), 0U);
    EXPECT_NE(Nodes().TextOf(Q(node)), name);
    EXPECT_LE(Statements([&, item = item] { Rename(name, Qt::Key_Return, item); }), 2U);
    EXPECT_EQ(Nodes().TextOf(Q(node)), name);
  }
  EXPECT_EQ(Children("_STESTS_4"), Q("_TEST_1 _TEST_2"));
  ExpectTreeLikeFresh();
}

// The commands are those of the row that was clicked; what is edited is the tree's selected node.
TEST_F(HandsTest, TextsOfOtherNodesAreNotStored) {
  Click("_SERVER_4");
  ClickRow(0);
  EXPECT_EQ(Statements([&] { Rename(Q("other")); }), 0U);
  EXPECT_EQ(Nodes().TextOf(Q("_SERVER_4")), Q("other"));
}

TEST_F(HandsTest, LongNamesAreNotCutByTheEditor) {
  const QString name(40000, u'n');
  ASSERT_TRUE(stores_.Tests().RenameTest(1, name));
  Nodes().SetText(Q("_TEST_1"), name);
  Click("_TEST_1");
  Choose("mTestRename");
  ASSERT_NE(NameEditor(), nullptr);
  QTest::keyClick(NameEditor(), Qt::Key_End);
  QTest::keyClick(NameEditor(), Qt::Key_X);
  QTest::keyClick(NameEditor(), Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([this] { return NameEditor() == nullptr; }));
  EXPECT_TRUE(Nodes().TextOf(Q("_TEST_1")) == name + u'x');
}

TEST_F(HandsTest, WindowCanGoWhileANameIsEdited) {
  Click("_TEST_1");
  Choose("mTestRename");
  ASSERT_NE(NameEditor(), nullptr);
  NameEditor()->setText(Q("half a na"));
  window_.reset();
  EXPECT_EQ(faulty_.Calls(Q("TestStore.RenameTest")), 0);
}

TEST_F(HandsTest, RenameThatFailsKeepsTheName) {
  for (const auto& [key, item, operation] : {std::tuple{"_TEST_1", "mTestRename", "TestStore.RenameTest"},
                                             {"_ALERT_1", "mAlertRename", "AlertStore.RenameAlert"}}) {
    Click(key);
    const QString name = Nodes().TextOf(Q(key));
    faulty_.ThrowFrom(Q(operation));
    ExpectFault("KVCTree_AfterLabelEdit");
    Rename(Q("lost"), Qt::Key_Return, item);
    dialogs_.Verify();
    EXPECT_EQ(Nodes().TextOf(Q(key)), name);
    ExpectTreeLikeFresh();
    faulty_.RefuseFrom(Q(operation));
    Rename(Q("refused"), Qt::Key_Return, item);
    EXPECT_EQ(Nodes().TextOf(Q(key)), Q("refused"));
    Nodes().SetText(Q(key), name);
  }
}

// --- Keys ---

TEST_F(HandsTest, KeysActOnTheTreesSelectedNode) {
  const std::pair<const char*, const char*> cases[] = {{"_GROUP_1", "Are you sure to remove definitely this group?"},
                                                       {"_SERVER_4", "Are you sure to remove definitely this server?"},
                                                       {"_TEST_1", "Are you sure to remove definitely this test?"},
                                                       {"_ALERT_3", "Are you sure to remove definitely this alert?"},
                                                       {"_GROUP_0", ""},
                                                       {"_STESTS_4", ""},
                                                       {"_ALERTS_4", ""},
                                                       {"_LOG", ""}};
  const std::pair<Qt::Key, Qt::KeyboardModifier> keys[] = {{Qt::Key_Delete, Qt::NoModifier},
                                                           {Qt::Key_Delete, Qt::KeypadModifier},
                                                           {Qt::Key_Period, Qt::KeypadModifier},
                                                           {Qt::Key_Comma, Qt::KeypadModifier}};
  for (const auto& [node, question] : cases) {
    SCOPED_TRACE(node);
    Click(node);
    for (const auto& [key, modifier] : keys) {
      if (*question != 0) ExpectQuestion(question);
      QTest::keyClick(&Tree(), key, modifier);
      dialogs_.Verify();
    }
    QTest::keyClick(&Tree(), Qt::Key_Period);
    QTest::keyClick(&Tree(), Qt::Key_Backspace);
  }
}

TEST_F(HandsTest, NothingIsDoneWithoutSelectedNode) {
  Click("_TEST_1");
  Tree().clearSelection();
  const int calls = faulty_.Calls();
  Choose("mTestRename");
  EXPECT_EQ(NameEditor(), nullptr);
  for (const Qt::Key key : {Qt::Key_F5, Qt::Key_Delete}) QTest::keyClick(&Tree(), key);
  EXPECT_EQ(faulty_.Calls(), calls);
}

// A row in the list is the selected key; Delete in the tree is still about the node that the tree shows as selected.
TEST_F(HandsTest, DeleteRemovesTheNodeAndNotTheClickedRow) {
  Click("_GROUP_1");
  ClickRow(0);
  ASSERT_EQ(Window().SelectedKey(), Q("_SERVER_4"));
  QTest::keyClick(&List(), Qt::Key_Delete);
  ExpectQuestion("Are you sure to remove definitely this group?", "YesButton");
  QTest::keyClick(&Tree(), Qt::Key_Delete);
  EXPECT_FALSE(Nodes().Contains(Q("_GROUP_1")));
  ExpectTreeLikeFresh();
}

TEST_F(HandsTest, F5ReadsTheListAgain) {
  Click("_GROUP_3");
  AddServer("late", 3);
  QTest::keyClick(&Tree(), Qt::Key_F5);
  EXPECT_EQ(Rows().rowCount(), 1);
  AddServer("later", 3);
  ClickRow(0);
  QTest::keyClick(&List(), Qt::Key_F5);
  EXPECT_EQ(Rows().rowCount(), 2);
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_3"));
}

// Everything else is in the menu bar as well.
TEST_F(HandsTest, ServiceIsStartedAndStoppedByKeyboard) {
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

// --- Mouse in the list ---

TEST_F(HandsTest, ClicksAndArrowsInTheListChooseRows) {
  Click("_GROUP_1");
  const int refills = Refills();
  ClickRow(0);
  EXPECT_EQ(Window().SelectedKey(), Q("_SERVER_4"));
  EXPECT_TRUE(Action(Q("mServerRemove"))->isEnabled());
  for (const auto& [key, chosen] : {std::pair(Qt::Key_Down, "_SERVER_5"), std::pair(Qt::Key_Down, "_SERVER_5"),
                                    std::pair(Qt::Key_Up, "_SERVER_4")}) {
    QTest::keyClick(&List(), key);
    EXPECT_EQ(Window().SelectedKey(), Q(chosen));
  }
  EXPECT_EQ(Tree().SelectedKey(), Q("_GROUP_1"));
  EXPECT_EQ(Refills(), refills);
}

TEST_F(HandsTest, ServersAreOpenedFromTheList) {
  for (const bool byKey : {false, true}) {
    Click("_GROUP_1");
    Tree().collapse(Nodes().IndexOf(Q("_GROUP_1")));
    ClickRow(0);
    const int refills = Refills();
    byKey ? QTest::keyClick(&List(), Qt::Key_Return) : DoubleClickRow(0);
    const QModelIndex server = Nodes().IndexOf(Q("_SERVER_4"));
    EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_4"));
    EXPECT_TRUE(Tree().isExpanded(server));
    EXPECT_TRUE(Tree().viewport()->rect().contains(Tree().visualRect(server).center()));
    EXPECT_EQ(Refills(), refills + 1);
    ASSERT_EQ(Rows().KeyOf(Rows().index(0, 0)), Q("_TEST_1"));
    DoubleClickRow(1);
    QTest::keyClick(&List(), Qt::Key_Enter);
    EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_4"));
    EXPECT_EQ(Refills(), refills + 1);
    ClickRow(0);
    EXPECT_EQ(Window().SelectedKey(), Q("_TEST_1"));
    EXPECT_TRUE(Action(Q("mTestRemove"))->isEnabled());
  }
}

TEST_F(HandsTest, ServerThatTheTreeLacksIsReported) {
  AddServer("new", 3);
  Click("_GROUP_3");
  ClickRow(0);
  dialogs_.ExpectError(Q("There is no node with the key \"_SERVER_8\".(Main:KVCContent_DblClick)"));
  DoubleClickRow(0);
}

TEST_F(HandsTest, ClicksBesideRowsOfAnEmptyListChangeNothing) {
  Click("_GROUP_3");
  const int calls = faulty_.Calls();
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) ClickBesideRows(button);
  QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
  EXPECT_EQ(Window().SelectedKey(), Q("_GROUP_3"));
  EXPECT_EQ(TakePopUp(), QString());
  EXPECT_EQ(faulty_.Calls(), calls);
}

// --- Pop-up menus ---

TEST_F(HandsTest, RightButtonShowsTheMenuOfTheNodeAndSelectsNothing) {
  Click("_SERVER_7");
  const std::pair<const char*, const char*> cases[] = {
      {"_GROUP_0", "mGroup"}, {"_GROUP_1", "mGroup"}, {"_SERVER_4", "mServer"}, {"_TEST_1", "mTest"},
      {"_ALERT_3", "mAlert"}, {"_LOG", "mLog"},       {"_STESTS_4", ""},        {"_ALERTS_4", ""}};
  const QSet<QString> enabled = EnabledItems();
  for (const auto& [node, menu] : cases) {
    Click(node, Qt::MiddleButton);
    EXPECT_EQ(TakePopUp(), QString()) << node;
    Click(node, Qt::RightButton);
    EXPECT_EQ(TakePopUp(), Q(menu)) << node;
    EXPECT_EQ(Window().SelectedKey(), Q("_SERVER_7"));
    EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_7"));
  }
  EXPECT_EQ(EnabledItems(), enabled);
  QTest::mouseClick(Tree().viewport(), Qt::RightButton, {}, {5, Tree().viewport()->height() - 2});
  EXPECT_EQ(TakePopUp(), QString());
}

TEST_F(HandsTest, RightButtonInTheListChoosesTheRow) {
  stores_.Log().AddLog(1, Q("a record"));
  for (const auto& [node, key, menu] :
       {std::tuple{"_GROUP_1", "_SERVER_4", "mServer"}, {"_SERVER_4", "_TEST_1", "mTest"}, {"_LOG", "", ""}}) {
    Click(node);
    ClickBesideRows(Qt::RightButton);
    EXPECT_EQ(TakePopUp(), QString());
    EXPECT_EQ(Window().SelectedKey(), Q(node));
    ClickRow(0, Qt::RightButton);
    EXPECT_EQ(TakePopUp(), Q(menu)) << node;
    EXPECT_EQ(Window().SelectedKey(), Q(key));
  }
  DoubleClickRow(0);  // a log row has no key
  EXPECT_EQ(Tree().SelectedKey(), Q("_LOG"));
  EXPECT_EQ(Rows().rowCount(), 1);
  Click("_SERVER_4", Qt::RightButton);  // nothing is selected after the log row
  EXPECT_EQ(TakePopUp(), QString());
}

TEST_F(HandsTest, MenuKeyShowsTheMenuOfWhatIsSelected) {
  const auto expect = [this](QWidget& view, const char* menu, const QPoint& point) {
    PressMenuKey(view);
    const QPointer<QWidget> shown = QApplication::activePopupWidget();
    EXPECT_TRUE(!shown || shown->pos() == point);
    EXPECT_EQ(TakePopUp(), Q(menu));
  };
  const QPoint group = Tree().viewport()->mapToGlobal(PointOf(Q("_GROUP_1")));
  const QPoint row = List().viewport()->mapToGlobal(QPoint());
  Click("_GROUP_1");
  expect(Tree(), "mGroup", group);
  expect(List(), "", {});
  ClickRow(1);
  expect(List(), "mServer", row + RowPoint(1));
  EXPECT_EQ(Window().SelectedKey(), Q("_SERVER_5"));
  expect(Tree(), "mGroup", group);
  EXPECT_TRUE(Action(Q("mGroupRemove"))->isEnabled()) << "the menu is about the node, not about the row";
}

}  // namespace
}  // namespace quarl::shell
