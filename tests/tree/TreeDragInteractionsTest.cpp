#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include "tree/InteractionsRig.h"

namespace quarl::tree {
namespace {

using TreeDragTest = InteractionsRig;

TEST_F(TreeDragTest, NodesCanBeDroppedWhereTheyBelong) {
  const struct {
    const char* dragged;
    const char* targets;
  } cases[] = {{"_SERVER_4", "_GROUP_0 _GROUP_2"},
               {"_ALERT_1", "_GROUP_0 _GROUP_2 _SERVER_4 _SERVER_7"},
               {"_GROUP_1", ""},
               {"_TEST_1", ""},
               {"_STESTS_4", ""},
               {"_ALERTS_4", ""},
               {"_LOG", ""}};
  for (const auto& c : cases) {
    Press(c.dragged);
    QStringList targets;
    for (const char* node :
         {"_GROUP_0", "_GROUP_2", "_SERVER_4", "_STESTS_4", "_TEST_1", "_ALERTS_4", "_ALERT_2", "_SERVER_7", "_LOG"}) {
      if (Hover(node)) targets << Q(node);
      EXPECT_EQ(drag.DropHighlight(), targets.contains(Q(node)) ? Q(node) : QString());
    }
    EXPECT_EQ(targets.join(u' '), Q(c.targets)) << c.dragged;
    EXPECT_FALSE(HoverAt({20, tree.viewport()->height() - 2}));
    Release();
  }
}

TEST_F(TreeDragTest, OnlyItsOwnNodesAreTaken) {
  Press("_SERVER_4");
  const QPoint point = PointOf("_GROUP_2");
  QMimeData text;
  text.setText(Q("_SERVER_4"));
  QDragEnterEvent enter(point, Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(tree.viewport(), &enter);
  EXPECT_FALSE(enter.isAccepted());
  dragged = Q("_SERVER_5");  // by another console
  EXPECT_FALSE(HoverAt(point));
  Drop(point);
  Release();
  EXPECT_EQ(Picture(nodes), FreshPicture());
  EXPECT_EQ(sql.Servers().GetServer(4)->idGroup, 1);
}

TEST_F(TreeDragTest, ServersMoveToTheirSortedPlace) {
  const quint64 statements = Statements([&] { Drag("_SERVER_4", "_GROUP_2"); });
  EXPECT_LE(statements, 5U);
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_4 _ALERTS_2"));
  EXPECT_EQ(Picture(nodes), FreshPicture());
  Drag("_SERVER_5", "_GROUP_2");
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_4 _SERVER_5 _ALERTS_2"));
  EXPECT_EQ(Picture(nodes), FreshPicture());
  const auto record = sql.Servers().GetServer(4);
  EXPECT_EQ(*record, (store::ServerRecord{Q("alpha"), Q("192.0.2.1"), 2}));
  EXPECT_EQ(tree.SelectedKey(), Q("_SERVER_5"));
  EXPECT_EQ(selected, Q("_SERVER_5"));
  EXPECT_EQ(drag.DropHighlight(), QString());
}

// The walk for the place begins at the first child, which is a group here.
TEST_F(TreeDragTest, ServersMovedToTheRootGroupComeFirst) {
  const QString groups = Children("_GROUP_0");
  Drag("_SERVER_4", "_GROUP_0");
  Drag("_SERVER_6", "_GROUP_0");
  EXPECT_EQ(Children("_GROUP_0"), Q("_SERVER_6 _SERVER_4 ") + groups);
}

TEST_F(TreeDragTest, ServersStayInGroupsOfTheSameName) {
  const QString before = Picture(nodes);
  for (const char* group : {"_GROUP_1", "_GROUP_3"}) Drag("_SERVER_4", group);
  EXPECT_EQ(Picture(nodes), before);
  EXPECT_EQ(stores.Calls(Q("ServerStore.GetServer")) + stores.Calls(Q("ServerStore.UpdateServer")), 0);
}

TEST_F(TreeDragTest, AlertsMoveBetweenOwnersWithTheirFolders) {
  const struct {
    const char* alert;
    const char* owner;
  } cases[] = {{"_ALERT_1", "_SERVER_7"}, {"_ALERT_2", "_SERVER_7"}, {"_ALERT_1", "_SERVER_7"},
               {"_ALERT_3", "_GROUP_1"},  {"_ALERT_2", "_GROUP_0"},  {"_ALERT_1", "_GROUP_2"}};
  for (const auto& c : cases) {
    EXPECT_LE(Statements([&] { Drag(c.alert, c.owner); }), 5U);
    EXPECT_EQ(Picture(nodes), FreshPicture()) << c.alert << " to " << c.owner;
    EXPECT_EQ(nodes.ParentOf(nodes.ParentOf(Q(c.alert))), Q(c.owner));
  }
  EXPECT_TRUE(tree.isExpanded(nodes.IndexOf(Q("_ALERTS_2"))));
}

// Folders of servers and groups carry the bare number of their owner.
TEST_F(TreeDragTest, AlertsGoToWhicheverFolderHasTheKey) {
  nodes.AddNode(u"_GROUP_3", u"_ALERTS_7", Q("ALERTS"), Q("iALERT"));
  Drag("_ALERT_1", "_SERVER_7");
  EXPECT_EQ(Children("_ALERTS_7"), Q("_ALERT_1"));
  EXPECT_EQ(nodes.ParentOf(Q("_ALERTS_7")), Q("_GROUP_3"));
  EXPECT_EQ(store::Column(sql.Alerts().GetAlertsByServer(7), "IDAlert"), Q("1"));
}

TEST_F(TreeDragTest, FailingStoreEndsTheDrop) {
  const struct {
    const char* operation;
    const char* dragged;
    const char* target;
  } cases[] = {{"ServerStore.GetServer", "_SERVER_4", "_GROUP_2"},
               {"ServerStore.UpdateServer", "_SERVER_4", "_GROUP_2"},
               {"AlertStore.MoveAlert", "_ALERT_1", "_SERVER_7"}};
  for (const auto& c : cases) {
    stores.ThrowFrom(Q(c.operation));
    dialogs.ExpectBox(Fault("KVCTree_DragDrop"), Q("OKButton"));
    Drag(c.dragged, c.target);
    dialogs.Verify();
    EXPECT_EQ(Picture(nodes), FreshPicture()) << c.operation;
    EXPECT_EQ(drag.DropHighlight(), QString());
    stores.Heal();
  }
}

TEST_F(TreeDragTest, RefusalsOfTheStoreAreNotLookedAt) {
  stores.RefuseFrom(Q("ServerStore.UpdateServer"));
  Drag("_SERVER_4", "_GROUP_2");
  EXPECT_EQ(nodes.ParentOf(u"_SERVER_4"), Q("_GROUP_2"));
  stores.RefuseFrom(Q("ServerStore.GetServer"));
  Drag("_SERVER_5", "_GROUP_2");
  EXPECT_EQ(nodes.ParentOf(u"_SERVER_5"), Q("_GROUP_2"));
  EXPECT_EQ(stores.Calls(Q("ServerStore.UpdateServer")), 1);
  stores.RefuseFrom(Q("AlertStore.MoveAlert"));
  Drag("_ALERT_1", "_SERVER_7");
  EXPECT_EQ(nodes.ParentOf(u"_ALERT_1"), Q("_ALERTS_7"));
}

TEST_F(TreeDragTest, ScrollsNearTheEdges) {
  for (int i = 0; i < 60; ++i) std::ignore = sql.Servers().AddServer(Q("s%1").arg(i), {}, 0);
  TreeBuilder(sql, nodes, {}).LoadTree();
  Press("_GROUP_1");
  Release();
  Press("_SERVER_7");
  const int height = tree.height();
  const int frame = tree.viewport()->y();
  const std::pair<int, int> cases[] = {{0, -1},          {9, -1},         {10, 0},         {height / 2, 0},
                                       {height - 10, 0}, {height - 9, 1}, {height - 1, 1}, {height, 0}};
  QScrollBar& bar = *tree.verticalScrollBar();
  for (const auto& [y, lines] : cases) {
    bar.setValue(20);
    std::ignore = HoverAt({60, y - frame});
    EXPECT_EQ(scrollTimer.isActive(), lines != 0) << y;
    if (lines == 0) continue;
    drag.ScrollTick();
    EXPECT_EQ(bar.value(), 20 + lines) << y;
  }
  std::ignore = HoverAt({60, 3});
  QDragLeaveEvent leave;
  QCoreApplication::sendEvent(tree.viewport(), &leave);
  EXPECT_FALSE(scrollTimer.isActive());
  std::ignore = HoverAt({60, 3});
  Release();
  EXPECT_FALSE(scrollTimer.isActive());
}

TEST_F(TreeDragTest, MarkFollowsThePointerWhileItScrolls) {
  for (int i = 0; i < 60; ++i) std::ignore = sql.Servers().AddServer(Q("s%1").arg(i, 2, 10, QLatin1Char('0')), {}, 0);
  TreeBuilder(sql, nodes, {}).LoadTree();
  Press("_ALERT_3");
  tree.verticalScrollBar()->setValue(10);
  const QPoint edge(60, 3);
  ASSERT_TRUE(HoverAt(edge));
  drag.ScrollTick();
  const QString target = tree.HitTest(edge);
  EXPECT_EQ(drag.DropHighlight(), target);
  Drop(edge);
  EXPECT_EQ(nodes.ParentOf(nodes.ParentOf(u"_ALERT_3")), target);
}

TEST_F(TreeDragTest, MarkIsSeen) {
  Press("_SERVER_5");
  const QRect rect = tree.visualRect(nodes.IndexOf(Q("_GROUP_2")));
  const QImage before = tree.viewport()->grab(rect).toImage();
  EXPECT_TRUE(Hover("_GROUP_2"));
  const QImage marked = tree.viewport()->grab(rect).toImage();
  EXPECT_EQ(marked.pixelColor(0, 0), tree.palette().color(QPalette::Highlight));
  EXPECT_NE(marked.pixelColor(rect.width() - 5, rect.height() / 2),
            before.pixelColor(rect.width() - 5, rect.height() / 2));
  Release();
  EXPECT_EQ(tree.viewport()->grab(rect).toImage(), before);
}

TEST_F(TreeDragTest, SlipOfThePointerDragsNothing) {
  paths = InstallPaths(folder.Path(Q("nowhere")));  // the drag cursor is looked for when a drag begins
  const QPoint point = PointOf("_SERVER_4");
  const int near = QApplication::startDragDistance() - 1;
  const auto moveBy = [&](int distance, Qt::MouseButton button = Qt::LeftButton) {
    QMouseEvent move(QEvent::MouseMove, point + QPoint(distance, 0), tree.viewport()->mapToGlobal(point), Qt::NoButton,
                     button, Qt::NoModifier);
    QCoreApplication::sendEvent(tree.viewport(), &move);
  };
  Press("_SERVER_4");
  moveBy(near);
  moveBy(near + 1, Qt::NoButton);
  Release();
  moveBy(near + 1);
  Press("_GROUP_1");
  moveBy(near + 50);
  Release();
  dialogs.ExpectBox(
      {Q("message"), Q("Quarl Console"),
       Q("The drag cursor \"%1/DRAGMOVE.ico\" cannot be read.(Main:KVCTree_MouseMove)").arg(paths.ApplicationFolder())},
      Q("OKButton"));
  Press("_SERVER_4");
  moveBy(near + 1);
  dialogs.Verify();
  moveBy(near + 50);  // the press is over
  EXPECT_EQ(Calls(), Q("options:_SERVER_4+ options:_GROUP_1+ options:_SERVER_4+"));
  EXPECT_EQ(tree.SelectedKey(), Q("_SERVER_4"));
}

}  // namespace
}  // namespace quarl::tree
