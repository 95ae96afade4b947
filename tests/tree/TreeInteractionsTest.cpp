#include <QContextMenuEvent>
#include <QTest>

#include "tree/InteractionsRig.h"

namespace quarl::tree {
namespace {

using TreeInteractionsTest = InteractionsRig;

TEST_F(TreeInteractionsTest, RenamesTestsAndAlertsInTheStore) {
  Click("_TEST_2");
  EXPECT_LE(Statements([&] { TypeName(Q("Zürich \\ 1")); }), 2U);
  Click("_ALERT_1");
  TypeName(Q("pager"));
  EXPECT_EQ(Text("_TEST_2"), Q("Zürich \\ 1"));
  EXPECT_EQ(Text("_ALERT_1"), Q("pager"));
  EXPECT_EQ(Children("_STESTS_4"), Q("_TEST_1 _TEST_2"));
  EXPECT_EQ(Picture(nodes), FreshPicture());
}

TEST_F(TreeInteractionsTest, EscapeKeepsTheName) {
  Click("_TEST_2");
  EXPECT_EQ(Statements([&] { TypeName(Q("other"), Qt::Key_Escape); }), 0U);
  EXPECT_EQ(Picture(nodes), FreshPicture());
}

TEST_F(TreeInteractionsTest, TextsOfOtherNodesAreNotStored) {
  Click("_SERVER_5");
  EXPECT_EQ(Statements([&] { TypeName(Q("other")); }), 0U);
  EXPECT_EQ(Text("_SERVER_5"), Q("other"));
}

TEST_F(TreeInteractionsTest, FailedRenameShowsTheStoredName) {
  for (const auto& [key, operation] :
       {std::pair("_TEST_1", "TestStore.RenameTest"), std::pair("_ALERT_1", "AlertStore.RenameAlert")}) {
    Click(key);
    const QString name = Text(key);
    stores.ThrowFrom(Q(operation));
    dialogs.ExpectBox(Fault("KVCTree_AfterLabelEdit"), Q("OKButton"));
    TypeName(Q("lost"));
    dialogs.Verify();
    EXPECT_EQ(Text(key), name);
    stores.Heal();
    stores.RefuseFrom(Q(operation));
    TypeName(Q("refused"));
    EXPECT_EQ(Text(key), Q("refused"));
  }
}

TEST_F(TreeInteractionsTest, NothingIsRenamedWithoutSelectedNode) {
  tree.clearSelection();
  hands.Rename();
  EXPECT_EQ(tree.viewport()->findChild<QWidget*>(), nullptr);
}

TEST_F(TreeInteractionsTest, DeleteRemovesTheSelectedObject) {
  const struct {
    const char* node;
    const char* removed;
  } cases[] = {{"_GROUP_0", ""},  {"_GROUP_1", "remove:_GROUP_"}, {"_SERVER_4", "remove:_SERVER_"}, {"_STESTS_4", ""},
               {"_ALERTS_4", ""}, {"_TEST_1", "remove:_TEST_"},   {"_ALERT_3", "remove:_ALERT_"},   {"_LOG", ""}};
  for (const auto& c : cases) {
    Click(c.node);
    calls.clear();
    Key(tree, Qt::Key_Delete);
    EXPECT_EQ(Calls(), Q(c.removed)) << c.node;
  }
}

TEST_F(TreeInteractionsTest, EveryDeleteKeyOfTheKeyboardCounts) {
  Click("_TEST_1");
  calls.clear();
  Key(tree, Qt::Key_Delete, Qt::KeypadModifier);
  Key(tree, Qt::Key_Period, Qt::KeypadModifier);
  Key(tree, Qt::Key_Comma, Qt::KeypadModifier);
  EXPECT_EQ(Calls(), Q("remove:_TEST_ remove:_TEST_ remove:_TEST_"));
  Key(tree, Qt::Key_Period);
  Key(tree, Qt::Key_Backspace);
  EXPECT_EQ(Calls(), QString());
}

TEST_F(TreeInteractionsTest, DeleteActsOnTheNodeThatItNames) {
  Click("_GROUP_1");
  QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, PointOfRow(1));
  EXPECT_EQ(selected, Q("_SERVER_5"));
  calls.clear();
  Key(tree, Qt::Key_Delete);
  EXPECT_EQ(Calls(), Q("options:_GROUP_1 remove:_GROUP_"));
  EXPECT_EQ(selected, Q("_GROUP_1"));
}

TEST_F(TreeInteractionsTest, F5RefillsTheList) {
  Click("_GROUP_1");
  std::ignore = sql.Servers().AddServer(Q("delta"), Q("192.0.2.9"), 1);
  EXPECT_EQ(rows.rowCount(), 2);
  calls.clear();
  Key(tree, Qt::Key_F5);
  EXPECT_EQ(Calls(), Q("options:_GROUP_1+"));
  EXPECT_EQ(rows.rowCount(), 3);
  tree.clearSelection();
  Key(tree, Qt::Key_F5);
  Key(tree, Qt::Key_Delete);
  EXPECT_EQ(Calls(), QString());
}

TEST_F(TreeInteractionsTest, RightButtonShowsTheMenuOfTheNodeUnderThePointer) {
  const std::pair<const char*, const char*> cases[] = {
      {"_GROUP_0", "mGroup"}, {"_GROUP_2", "mGroup"}, {"_SERVER_4", "mServer"}, {"_TEST_1", "mTest"},
      {"_ALERT_3", "mAlert"}, {"_LOG", "mLog"},       {"_STESTS_4", ""},        {"_ALERTS_4", ""}};
  Click("_SERVER_7");
  calls.clear();
  for (const auto& [node, menu] : cases) {
    Click(node, Qt::RightButton);
    EXPECT_EQ(Calls(), Q(menu)) << node;
    Click(node, Qt::MiddleButton);
    EXPECT_EQ(Calls(), QString());
  }
  EXPECT_EQ(tree.SelectedKey(), Q("_SERVER_7"));
  EXPECT_EQ(selected, Q("_SERVER_7"));
  QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, {5, tree.viewport()->height() - 2});
  selected.clear();
  Click("_SERVER_4", Qt::RightButton);
  EXPECT_EQ(Calls(), QString());
}

TEST_F(TreeInteractionsTest, MenuKeyShowsTheMenuOfTheSelectedNode) {
  Click("_SERVER_4");
  calls.clear();
  const QPoint point = tree.viewport()->mapToGlobal(PointOf("_SERVER_4"));
  QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {}, {});
  QCoreApplication::sendEvent(&tree, &menuKey);
  EXPECT_EQ(Calls(), Q("mServer"));
  EXPECT_EQ(menuPoint, point);
}

}  // namespace
}  // namespace quarl::tree
