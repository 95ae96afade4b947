#include <gtest/gtest.h>

#include <QTest>

#include "base/NodeKey.h"
#include "tree/ObjectTree.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

// A root group with group 1 (servers 11 to 13, each with a tests folder of one test) and 60 servers of its own.
TreeNodes SmallTree(NodeImages& images) {
  const quint16 image = images.NumberOf(Q("iSERVER"));
  TreeNodes nodes;
  const NodeId root = nodes.Insert(kTop, 0, {NodeKind::Group, 0}, "SERVERS", image);
  const NodeId group = nodes.Insert(root, 0, {NodeKind::Group, 1}, "group", image);
  for (qint32 id = 11; id <= 13; ++id) {
    const NodeId server = nodes.Insert(group, static_cast<quint32>(id - 11), {NodeKind::Server, id}, "server", image);
    const NodeId folder = nodes.Insert(server, 0, {NodeKind::TestsFolder, id}, "TESTS", image);
    nodes.Insert(folder, 0, {NodeKind::Test, id}, "ping", image);
  }
  for (qint32 id = 101; id <= 160; ++id) {
    nodes.Insert(root, static_cast<quint32>(id - 100), {NodeKind::Server, id}, "server", image);
  }
  nodes.Insert(kTop, 1, {NodeKind::Log, 0}, "LOGS", image);
  nodes.SetExpanded(root, true);
  nodes.ExpandFolders();
  return nodes;
}

class ObjectTreeTest : public ::testing::Test {
 protected:
  ObjectTreeTest() {
    model_.Replace(SmallTree(model_.Images()));
    view_.SetNodeClick([this](const QString& key) { clicks_ << key; });
    view_.resize(300, 300);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view_));
  }

  QPoint PointOf(const QString& key) { return view_.visualRect(model_.IndexOf(key)).center(); }
  void Click(const QString& key) { QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PointOf(key)); }
  bool IsOpen(const QString& key) { return view_.isExpanded(model_.IndexOf(key)); }
  // Takes the clicks so far, delivered late or not.
  QStringList Clicks() {
    QCoreApplication::processEvents();
    return std::exchange(clicks_, {});
  }

  ObjectTreeModel model_{TestIcon};
  ObjectTree view_{model_};
  QStringList clicks_;
};

TEST_F(ObjectTreeTest, IsNamedForTestsAndScreenReaders) {
  EXPECT_EQ(view_.objectName(), Q("KVCTree"));
  EXPECT_EQ(view_.accessibleName(), Q("KVCTree"));
  EXPECT_EQ(model_.IndexOf(u"_GROUP_1").data(Qt::AccessibleDescriptionRole), Q("_GROUP_1"));
}

TEST_F(ObjectTreeTest, LeftClickRaisesOnceAndAgainOnTheSelectedNode) {
  Click(Q("_GROUP_1"));
  EXPECT_EQ(Clicks(), QStringList{Q("_GROUP_1")});
  EXPECT_EQ(view_.SelectedKey(), Q("_GROUP_1"));
  Click(Q("_GROUP_1"));
  EXPECT_EQ(Clicks(), QStringList{Q("_GROUP_1")});
}

TEST_F(ObjectTreeTest, KeyboardRaisesForEachNodeItReaches) {
  view_.Select(Q("_GROUP_0"));
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Up, Qt::Key_Up, Qt::Key_Up}) {
    QTest::keyClick(&view_, key);
  }
  const QStringList expected{Q("_GROUP_1"), Q("_SERVER_11"), Q("_GROUP_1"), Q("_GROUP_0")};
  EXPECT_EQ(Clicks(), expected);
  QTest::keyClick(&view_, Qt::Key_G);
  EXPECT_EQ(Clicks(), QStringList{Q("_GROUP_1")});
}

TEST_F(ObjectTreeTest, WhatTheProgramDoesRaisesNothing) {
  view_.Select(Q("_SERVER_101"));
  model_.RemoveNode(u"_SERVER_101");
  view_.clearFocus();
  view_.setFocus();
  view_.EnsureVisible(Q("_TEST_12"));
  model_.Replace(SmallTree(model_.Images()));
  EXPECT_EQ(Clicks(), QStringList());
  EXPECT_EQ(view_.SelectedKey(), QString());
  EXPECT_THROW(view_.Select(Q("_SERVER_7")), Error);
}

TEST_F(ObjectTreeTest, BranchMarkOpensWithoutRaising) {
  const QRect rect = view_.visualRect(model_.IndexOf(u"_GROUP_1"));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::NoModifier, {rect.left() - 10, rect.center().y()});
  EXPECT_TRUE(IsOpen(Q("_GROUP_1")));
  EXPECT_EQ(Clicks(), QStringList());
}

TEST_F(ObjectTreeTest, FoldersOpenWithTheirServer) {
  EXPECT_TRUE(IsOpen(Q("_GROUP_0")));
  EXPECT_TRUE(model_.IsExpanded(u"_STESTS_11"));
  EXPECT_FALSE(IsOpen(Q("_STESTS_11")));
  view_.Expand(Q("_GROUP_1"));
  EXPECT_FALSE(IsOpen(Q("_STESTS_11")));
  view_.Expand(Q("_SERVER_11"));
  EXPECT_TRUE(IsOpen(Q("_STESTS_11")));
  EXPECT_FALSE(IsOpen(Q("_STESTS_12")));
  EXPECT_TRUE(view_.visualRect(model_.IndexOf(u"_TEST_11")).isValid());
}

TEST_F(ObjectTreeTest, RemembersWhatTheUserClosed) {
  view_.Expand(Q("_GROUP_1"));
  view_.Expand(Q("_SERVER_11"));
  view_.collapse(model_.IndexOf(u"_STESTS_11"));
  EXPECT_FALSE(model_.IsExpanded(u"_STESTS_11"));
  view_.collapse(model_.IndexOf(u"_SERVER_11"));
  view_.Expand(Q("_SERVER_11"));
  EXPECT_FALSE(IsOpen(Q("_STESTS_11")));
}

TEST_F(ObjectTreeTest, EnsureVisibleOpensTheParents) {
  view_.EnsureVisible(Q("_SERVER_160"));
  EXPECT_TRUE(view_.viewport()->rect().contains(view_.visualRect(model_.IndexOf(u"_SERVER_160"))));
  view_.EnsureVisible(Q("_TEST_12"));
  EXPECT_TRUE(view_.viewport()->rect().contains(view_.visualRect(model_.IndexOf(u"_TEST_12")).topLeft()));
  EXPECT_TRUE(IsOpen(Q("_SERVER_12")));
  EXPECT_FALSE(IsOpen(Q("_SERVER_11")));
  EXPECT_EQ(view_.HitTest(PointOf(Q("_TEST_12"))), Q("_TEST_12"));
  EXPECT_EQ(view_.HitTest({5, 5000}), QString());
  EXPECT_EQ(view_.HitTest({5, view_.viewport()->height() + 2}), QString());
}

TEST_F(ObjectTreeTest, MovedServerStaysOpen) {
  view_.EnsureVisible(Q("_TEST_12"));
  view_.Select(Q("_TEST_12"));
  model_.MoveNode(u"_SERVER_12", u"_GROUP_0", ObjectTreeModel::Place::Last);
  EXPECT_TRUE(IsOpen(Q("_SERVER_12")));
  EXPECT_TRUE(IsOpen(Q("_STESTS_12")));
  EXPECT_EQ(view_.SelectedKey(), Q("_TEST_12"));
  view_.EnsureVisible(Q("_TEST_12"));
  EXPECT_EQ(view_.HitTest(PointOf(Q("_TEST_12"))), Q("_TEST_12"));
  EXPECT_EQ(Clicks(), QStringList());
}

TEST_F(ObjectTreeTest, FirstChildOfAnEmptyOpenRootIsShown) {
  TreeNodes nodes;
  const quint16 image = model_.Images().NumberOf(Q("iSERVER"));
  nodes.SetExpanded(nodes.Insert(kTop, 0, {NodeKind::Group, 0}, "SERVERS", image), true);
  model_.Replace(std::move(nodes));
  EXPECT_TRUE(IsOpen(Q("_GROUP_0")));
  model_.AddNode(u"_GROUP_0", u"_GROUP_1", Q("first"), Q("iSERVER"));
  EXPECT_TRUE(view_.visualRect(model_.IndexOf(u"_GROUP_1")).isValid());
}

}  // namespace
}  // namespace quarl::tree
