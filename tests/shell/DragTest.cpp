#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include "shell/MainFixture.h"
#include "tree/TreeDrag.h"

namespace quarl::shell {
namespace {

class DragTest : public FilledFixture {
 protected:
  QPoint NodePoint(const char* key) const { return PointOf(Q(key)); }
  void Press(const char* key) {
    dragged_ = Q(key);
    QTest::mousePress(Tree().viewport(), Qt::LeftButton, {}, NodePoint(key));
  }
  void Release() const { QTest::mouseRelease(Tree().viewport(), Qt::LeftButton, {}, QPoint(2, 2)); }
  /// What Qt sends while a node is dragged, here to a point; whether it may be dropped there.
  template <typename Event>
  bool Send(const QPoint& point, const QMimeData& data) const {
    Event event(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(Tree().viewport(), &event);
    return event.isAccepted();
  }
  template <typename Event>
  bool Send(const QPoint& point) const {
    QMimeData data;
    data.setData(tree::TreeDrag::Format(), dragged_.toUtf8());
    return Send<Event>(point, data);
  }
  bool HoverAt(const QPoint& point) const {
    EXPECT_TRUE(Send<QDragEnterEvent>(point));
    return Send<QDragMoveEvent>(point);
  }
  bool Hover(const char* key) const { return HoverAt(NodePoint(key)); }
  void Drop(const QPoint& point) const { Send<QDropEvent>(point); }
  void Drag(const char* key, const char* target) {
    Press(key);
    const QPoint point = NodePoint(target);
    if (HoverAt(point)) Drop(point);
    Release();
  }

  QString dragged_;  ///< the key that drag events carry
};

TEST_F(DragTest, NodesCanBeDroppedWhereTheyBelong) {
  const std::pair<const char*, const char*> cases[] = {{"_SERVER_4", "_GROUP_0 _GROUP_2"},
                                                       {"_ALERT_1", "_GROUP_0 _GROUP_2 _SERVER_4 _SERVER_7"},
                                                       {"_GROUP_1", ""},
                                                       {"_TEST_1", ""},
                                                       {"_STESTS_4", ""},
                                                       {"_ALERTS_4", ""},
                                                       {"_LOG", ""}};
  for (const auto& [dragged, wanted] : cases) {
    Press(dragged);
    QStringList targets;
    for (const char* node :
         {"_GROUP_0", "_GROUP_2", "_SERVER_4", "_STESTS_4", "_TEST_1", "_ALERTS_4", "_ALERT_2", "_SERVER_7", "_LOG"}) {
      if (Hover(node)) targets << Q(node);
      EXPECT_EQ(DropHighlight(), targets.contains(Q(node)) ? Q(node) : QString());
    }
    EXPECT_EQ(targets.join(u' '), Q(wanted)) << dragged;
    EXPECT_FALSE(HoverAt({20, Tree().viewport()->height() - 2}));
    Release();
  }
}

TEST_F(DragTest, OnlyItsOwnNodesAreTaken) {
  Press("_SERVER_4");
  const QPoint point = NodePoint("_GROUP_2");
  QMimeData text;
  text.setText(Q("_SERVER_4"));
  EXPECT_FALSE(Send<QDragEnterEvent>(point, text));
  dragged_ = Q("_SERVER_5");  // by another console
  EXPECT_FALSE(HoverAt(point));
  Drop(point);
  Release();
  ExpectTreeLikeFresh();
  EXPECT_EQ(stores_.Servers().GetServer(4)->idGroup, 1);
}

TEST_F(DragTest, ServersMoveToTheirSortedPlace) {
  const quint64 statements = Statements([&] { Drag("_SERVER_4", "_GROUP_2"); });
  EXPECT_LE(statements, 5U);
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_4 _ALERTS_2"));
  ExpectTreeLikeFresh();
  Drag("_SERVER_5", "_GROUP_2");
  EXPECT_EQ(Children("_GROUP_2"), Q("_SERVER_6 _SERVER_4 _SERVER_5 _ALERTS_2"));
  ExpectTreeLikeFresh();
  const auto record = stores_.Servers().GetServer(4);
  EXPECT_EQ(*record, (store::ServerRecord{Q("alpha"), Q("192.0.2.7"), 2}));
  EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_5"));
  EXPECT_EQ(Window().SelectedKey(), Q("_SERVER_5"));
  EXPECT_EQ(DropHighlight(), QString());
}

// The walk for the place begins at the first child, which is a group here.
TEST_F(DragTest, ServersMovedToTheRootGroupComeFirst) {
  const QString groups = Children("_GROUP_0");
  Drag("_SERVER_4", "_GROUP_0");
  Drag("_SERVER_6", "_GROUP_0");
  EXPECT_EQ(Children("_GROUP_0"), Q("_SERVER_6 _SERVER_4 ") + groups);
}

TEST_F(DragTest, ServersStayInGroupsOfTheSameName) {
  for (const char* group : {"_GROUP_1", "_GROUP_3"}) Drag("_SERVER_4", group);
  ExpectTreeLikeFresh();
  EXPECT_EQ(faulty_.Calls(Q("ServerStore.GetServer")) + faulty_.Calls(Q("ServerStore.UpdateServer")), 0);
}

TEST_F(DragTest, AlertsMoveBetweenOwnersWithTheirFolders) {
  const struct {
    const char* alert;
    const char* owner;
  } cases[] = {{"_ALERT_1", "_SERVER_7"}, {"_ALERT_2", "_SERVER_7"}, {"_ALERT_1", "_SERVER_7"},
               {"_ALERT_3", "_GROUP_1"},  {"_ALERT_2", "_GROUP_0"},  {"_ALERT_1", "_GROUP_2"}};
  for (const auto& c : cases) {
    EXPECT_LE(Statements([&] { Drag(c.alert, c.owner); }), 5U);
    ExpectTreeLikeFresh();
    EXPECT_EQ(Nodes().ParentOf(Nodes().ParentOf(Q(c.alert))), Q(c.owner));
  }
  EXPECT_TRUE(Tree().isExpanded(Nodes().IndexOf(Q("_ALERTS_2"))));
}

// Folders of servers and groups carry the bare number of their owner.
TEST_F(DragTest, AlertsGoToWhicheverFolderHasTheKey) {
  Nodes().AddNode(u"_GROUP_3", u"_ALERTS_7", Q("ALERTS"), Q("iALERT"));
  Drag("_ALERT_1", "_SERVER_7");
  EXPECT_EQ(Children("_ALERTS_7"), Q("_ALERT_1"));
  EXPECT_EQ(Nodes().ParentOf(Q("_ALERTS_7")), Q("_GROUP_3"));
  EXPECT_EQ(stores_.Alerts().GetAlertsByServer(7).Value("IDAlert").toInt(), 1);
}

TEST_F(DragTest, FailingStoreEndsTheDrop) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"ServerStore.GetServer", "_SERVER_4", "_GROUP_2"},
      {"ServerStore.UpdateServer", "_SERVER_4", "_GROUP_2"},
      {"AlertStore.MoveAlert", "_ALERT_1", "_SERVER_7"}};
  for (const auto& [operation, dragged, target] : cases) {
    faulty_.ThrowFrom(Q(operation));
    ExpectFault("KVCTree_DragDrop");
    Drag(dragged, target);
    dialogs_.Verify();
    ExpectTreeLikeFresh();
    EXPECT_EQ(DropHighlight(), QString());
    faulty_.Heal();
  }
}

TEST_F(DragTest, RefusalsOfTheStoreAreNotLookedAt) {
  faulty_.RefuseFrom(Q("ServerStore.UpdateServer"));
  Drag("_SERVER_4", "_GROUP_2");
  EXPECT_EQ(Nodes().ParentOf(u"_SERVER_4"), Q("_GROUP_2"));
  faulty_.RefuseFrom(Q("ServerStore.GetServer"));
  Drag("_SERVER_5", "_GROUP_2");
  EXPECT_EQ(Nodes().ParentOf(u"_SERVER_5"), Q("_GROUP_2"));
  EXPECT_EQ(faulty_.Calls(Q("ServerStore.UpdateServer")), 1);
  faulty_.RefuseFrom(Q("AlertStore.MoveAlert"));
  Drag("_ALERT_1", "_SERVER_7");
  EXPECT_EQ(Nodes().ParentOf(u"_ALERT_1"), Q("_ALERTS_7"));
}

TEST_F(DragTest, ScrollsNearTheEdges) {
  for (int i = 0; i < 60; ++i) std::ignore = stores_.Servers().AddServer(Q("s%1").arg(i), {}, 0);
  tree::TreeBuilder(stores_, Nodes(), {}).LoadTree();
  Press("_GROUP_1");
  Release();
  Press("_SERVER_7");
  const int height = Tree().height();
  const int frame = Tree().viewport()->y();
  const std::pair<int, int> cases[] = {{0, -1},          {9, -1},         {10, 0},         {height / 2, 0},
                                       {height - 10, 0}, {height - 9, 1}, {height - 1, 1}, {height, 0}};
  QScrollBar& bar = *Tree().verticalScrollBar();
  for (const auto& [y, lines] : cases) {
    bar.setValue(20);
    std::ignore = HoverAt({60, y - frame});
    EXPECT_EQ(Timer("scrollTimer").isActive(), lines != 0) << y;
    if (lines == 0) continue;
    Tick("scrollTimer");
    EXPECT_EQ(bar.value(), 20 + lines) << y;
  }
  std::ignore = HoverAt({60, 3});
  QDragLeaveEvent leave;
  QCoreApplication::sendEvent(Tree().viewport(), &leave);
  EXPECT_FALSE(Timer("scrollTimer").isActive());
  std::ignore = HoverAt({60, 3});
  Release();
  EXPECT_FALSE(Timer("scrollTimer").isActive());
}

TEST_F(DragTest, MarkFollowsThePointerWhileItScrolls) {
  for (int i = 0; i < 60; ++i)
    std::ignore = stores_.Servers().AddServer(Q("s%1").arg(i, 2, 10, QLatin1Char('0')), {}, 0);
  tree::TreeBuilder(stores_, Nodes(), {}).LoadTree();
  Press("_ALERT_3");
  Tree().verticalScrollBar()->setValue(10);
  const QPoint edge(60, 3);
  ASSERT_TRUE(HoverAt(edge));
  Tick("scrollTimer");
  const QString target = Tree().HitTest(edge);
  EXPECT_EQ(DropHighlight(), target);
  Drop(edge);
  EXPECT_EQ(Nodes().ParentOf(Nodes().ParentOf(u"_ALERT_3")), target);
}

TEST_F(DragTest, MarkIsSeen) {
  Press("_SERVER_5");
  const QRect rect = Tree().visualRect(Nodes().IndexOf(Q("_GROUP_2")));
  const QImage before = Tree().viewport()->grab(rect).toImage();
  EXPECT_TRUE(Hover("_GROUP_2"));
  const QImage marked = Tree().viewport()->grab(rect).toImage();
  EXPECT_EQ(marked.pixelColor(0, 0), Tree().palette().color(QPalette::Highlight));
  EXPECT_NE(marked.pixelColor(rect.width() - 5, rect.height() / 2),
            before.pixelColor(rect.width() - 5, rect.height() / 2));
  Release();
  EXPECT_EQ(Tree().viewport()->grab(rect).toImage(), before);
}

TEST_F(DragTest, SlipOfThePointerDragsNothing) {
  const QPoint point = NodePoint("_SERVER_4");
  const int near = QApplication::startDragDistance() - 1;
  const auto moveBy = [&](int distance, Qt::MouseButton button = Qt::LeftButton) {
    QMouseEvent move(QEvent::MouseMove, point + QPoint(distance, 0), Tree().viewport()->mapToGlobal(point),
                     Qt::NoButton, button, Qt::NoModifier);
    QCoreApplication::sendEvent(Tree().viewport(), &move);
  };
  const int refills = Refills();
  Press("_SERVER_4");
  moveBy(near);
  moveBy(near + 1, Qt::NoButton);
  Release();
  moveBy(near + 1);
  Press("_GROUP_1");
  moveBy(near + 50);
  Release();
  dialogs_.ExpectError(Q("The drag cursor \"%1/DRAGMOVE.ico\" cannot be read.(Main:KVCTree_MouseMove)").arg(Folder()));
  Press("_SERVER_4");
  moveBy(near + 1);
  dialogs_.Verify();
  moveBy(near + 50);  // the press is over
  EXPECT_EQ(Refills(), refills + 3) << "each press was a click";
  EXPECT_EQ(Tree().SelectedKey(), Q("_SERVER_4"));
}

}  // namespace
}  // namespace quarl::shell
