#include <QContextMenuEvent>
#include <QTest>

#include "tree/InteractionsRig.h"

namespace quarl::tree {
namespace {

class ContentInteractionsTest : public InteractionsRig {
 protected:
  void ClickRow(int row, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(list.viewport(), button, {}, PointOfRow(row));
  }
  void Show(const char* node) {
    Click(node);
    calls.clear();
  }
};

TEST_F(ContentInteractionsTest, ClickChoosesTheRow) {
  Show("_SERVER_4");
  ClickRow(1);
  EXPECT_EQ(Calls(), Q("options:_TEST_2"));
  EXPECT_EQ(selected, Q("_TEST_2"));
  EXPECT_EQ(tree.SelectedKey(), Q("_SERVER_4"));
  EXPECT_EQ(rows.rowCount(), 2);
}

TEST_F(ContentInteractionsTest, ClickBesideRowsOfAnEmptyListChangesNothing) {
  Show("_GROUP_3");
  QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, {30, 30});
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, {30, 30});
  QTest::mouseClick(list.viewport(), Qt::RightButton, {}, {30, 30});
  EXPECT_EQ(Calls(), QString());
  EXPECT_EQ(selected, Q("_GROUP_3"));
}

TEST_F(ContentInteractionsTest, OpensAServerWithItsTests) {
  for (const bool byKey : {false, true}) {
    Show("_GROUP_1");
    tree.collapse(nodes.IndexOf(Q("_GROUP_1")));
    ClickRow(0);
    if (byKey) {
      Key(list, Qt::Key_Return);
    } else {
      QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, PointOfRow(0));
    }
    EXPECT_EQ(Calls(), Q("options:_SERVER_4 options:_SERVER_4+"));
    EXPECT_EQ(tree.SelectedKey(), Q("_SERVER_4"));
    EXPECT_TRUE(tree.isExpanded(nodes.IndexOf(Q("_SERVER_4"))));
    EXPECT_TRUE(tree.viewport()->rect().contains(tree.visualRect(nodes.IndexOf(Q("_SERVER_4"))).center()));
    EXPECT_EQ(rows.KeyOf(rows.index(0, 0)), Q("_TEST_1"));
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, PointOfRow(1));
    Key(list, Qt::Key_Enter);
    EXPECT_EQ(Calls(), QString());
  }
}

TEST_F(ContentInteractionsTest, ServerThatTheTreeLacksIsReported) {
  std::ignore = sql.Servers().AddServer(Q("new"), {}, 3);
  Show("_GROUP_3");
  ClickRow(0);
  dialogs.ExpectBox(
      {Q("message"), Q("Quarl Console"), Q("There is no node with the key \"_SERVER_8\".(Main:KVCContent_DblClick)")},
      Q("OKButton"));
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, PointOfRow(0));
}

TEST_F(ContentInteractionsTest, ArrowsChooseLikeClicks) {
  Show("_GROUP_1");
  ClickRow(0);
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up}) Key(list, key);
  EXPECT_EQ(Calls(), Q("options:_SERVER_4 options:_SERVER_5 options:_SERVER_4"));
  EXPECT_EQ(selected, Q("_SERVER_4"));
}

TEST_F(ContentInteractionsTest, RightButtonChoosesAndShowsTheMenu) {
  Show("_GROUP_1");
  ClickRow(1, Qt::RightButton);
  EXPECT_EQ(Calls(), Q("options:_SERVER_5 mServer"));
  EXPECT_EQ(selected, Q("_SERVER_5"));
  QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {}, {});
  QCoreApplication::sendEvent(&list, &menuKey);
  EXPECT_EQ(Calls(), Q("options:_SERVER_5 mServer"));
  EXPECT_EQ(menuPoint, list.viewport()->mapToGlobal(PointOfRow(1)));
  QTest::mouseClick(list.viewport(), Qt::RightButton, {}, {30, list.viewport()->height() - 3});
  EXPECT_EQ(Calls(), QString());
  Show("_SERVER_4");
  ClickRow(0, Qt::RightButton);
  EXPECT_EQ(Calls(), Q("options:_TEST_1 mTest"));
}

TEST_F(ContentInteractionsTest, LogRowsHaveNoKeyAndNoMenu) {
  sql.Log().AddLog(1, Q("something"));
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
    Show("_LOG");
    ClickRow(0, button);
    EXPECT_EQ(Calls(), Q("options:"));
    EXPECT_EQ(selected, QString());
  }
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, PointOfRow(0));
  EXPECT_EQ(tree.SelectedKey(), Q("_LOG"));
  EXPECT_EQ(rows.rowCount(), 1);
}

TEST_F(ContentInteractionsTest, F5RefreshesTheNodeOfTheTree) {
  Show("_GROUP_1");
  ClickRow(1);
  calls.clear();
  Key(list, Qt::Key_Delete);
  Key(list, Qt::Key_F5);
  EXPECT_EQ(Calls(), Q("options:_GROUP_1+"));
  EXPECT_EQ(selected, Q("_GROUP_1"));
}

}  // namespace
}  // namespace quarl::tree
