#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTest>

#include "base/NodeKey.h"
#include "tree/ObjectTree.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

// A root group with group 1 (servers 11 to 13, each with a tests folder of one test) and 60 servers of its own.
TreeNodes SmallTree(NodeImages& images) {
  const quint16 image = images.NumberOf(QStringLiteral("iSERVER"));
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
  void Click(const QString& key, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(view_.viewport(), button, Qt::NoModifier, PointOf(key));
  }
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
  EXPECT_EQ(view_.objectName(), QStringLiteral("KVCTree"));
  EXPECT_EQ(view_.accessibleName(), QStringLiteral("KVCTree"));
  EXPECT_EQ(model_.IndexOf(u"_GROUP_1").data(Qt::AccessibleDescriptionRole), QStringLiteral("_GROUP_1"));
}

TEST_F(ObjectTreeTest, LeftClickRaisesOnceAndAgainOnTheSelectedNode) {
  Click(QStringLiteral("_GROUP_1"));
  EXPECT_EQ(Clicks(), QStringList{QStringLiteral("_GROUP_1")});
  EXPECT_EQ(view_.SelectedKey(), QStringLiteral("_GROUP_1"));
  Click(QStringLiteral("_GROUP_1"));
  EXPECT_EQ(Clicks(), QStringList{QStringLiteral("_GROUP_1")});
}

TEST_F(ObjectTreeTest, OtherButtonsNeitherSelectNorRaise) {
  view_.Select(QStringLiteral("_GROUP_0"));
  Click(QStringLiteral("_GROUP_1"), Qt::RightButton);
  Click(QStringLiteral("_GROUP_1"), Qt::MiddleButton);
  EXPECT_EQ(Clicks(), QStringList());
  EXPECT_EQ(view_.SelectedKey(), QStringLiteral("_GROUP_0"));
}

TEST_F(ObjectTreeTest, KeyboardRaisesForEachNodeItReaches) {
  view_.Select(QStringLiteral("_GROUP_0"));
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Up, Qt::Key_Up, Qt::Key_Up}) {
    QTest::keyClick(&view_, key);
  }
  const QStringList expected{QStringLiteral("_GROUP_1"), QStringLiteral("_SERVER_11"), QStringLiteral("_GROUP_1"),
                             QStringLiteral("_GROUP_0")};
  EXPECT_EQ(Clicks(), expected);
  QTest::keyClick(&view_, Qt::Key_G);
  EXPECT_EQ(Clicks(), QStringList{QStringLiteral("_GROUP_1")});
}

TEST_F(ObjectTreeTest, WhatTheProgramDoesRaisesNothing) {
  view_.Select(QStringLiteral("_SERVER_101"));
  model_.RemoveNode(u"_SERVER_101");
  view_.clearFocus();
  view_.setFocus();
  view_.EnsureVisible(QStringLiteral("_TEST_12"));
  model_.Replace(SmallTree(model_.Images()));
  EXPECT_EQ(Clicks(), QStringList());
  EXPECT_EQ(view_.SelectedKey(), QString());
  EXPECT_THROW(view_.Select(QStringLiteral("_SERVER_7")), Error);
}

TEST_F(ObjectTreeTest, BranchMarkOpensWithoutRaising) {
  const QRect rect = view_.visualRect(model_.IndexOf(u"_GROUP_1"));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::NoModifier, {rect.left() - 10, rect.center().y()});
  EXPECT_TRUE(IsOpen(QStringLiteral("_GROUP_1")));
  EXPECT_EQ(Clicks(), QStringList());
}

TEST_F(ObjectTreeTest, FoldersOpenWithTheirServer) {
  EXPECT_TRUE(IsOpen(QStringLiteral("_GROUP_0")));
  EXPECT_TRUE(model_.IsExpanded(u"_STESTS_11"));
  EXPECT_FALSE(IsOpen(QStringLiteral("_STESTS_11")));
  view_.Expand(QStringLiteral("_GROUP_1"));
  EXPECT_FALSE(IsOpen(QStringLiteral("_STESTS_11")));
  view_.Expand(QStringLiteral("_SERVER_11"));
  EXPECT_TRUE(IsOpen(QStringLiteral("_STESTS_11")));
  EXPECT_FALSE(IsOpen(QStringLiteral("_STESTS_12")));
  EXPECT_TRUE(view_.visualRect(model_.IndexOf(u"_TEST_11")).isValid());
}

TEST_F(ObjectTreeTest, RemembersWhatTheUserClosed) {
  view_.Expand(QStringLiteral("_GROUP_1"));
  view_.Expand(QStringLiteral("_SERVER_11"));
  view_.collapse(model_.IndexOf(u"_STESTS_11"));
  EXPECT_FALSE(model_.IsExpanded(u"_STESTS_11"));
  view_.collapse(model_.IndexOf(u"_SERVER_11"));
  view_.Expand(QStringLiteral("_SERVER_11"));
  EXPECT_FALSE(IsOpen(QStringLiteral("_STESTS_11")));
}

TEST_F(ObjectTreeTest, EnsureVisibleOpensTheParents) {
  view_.EnsureVisible(QStringLiteral("_SERVER_160"));
  EXPECT_TRUE(view_.viewport()->rect().contains(view_.visualRect(model_.IndexOf(u"_SERVER_160"))));
  view_.EnsureVisible(QStringLiteral("_TEST_12"));
  EXPECT_TRUE(view_.viewport()->rect().contains(view_.visualRect(model_.IndexOf(u"_TEST_12")).topLeft()));
  EXPECT_TRUE(IsOpen(QStringLiteral("_SERVER_12")));
  EXPECT_FALSE(IsOpen(QStringLiteral("_SERVER_11")));
  EXPECT_EQ(view_.HitTest(PointOf(QStringLiteral("_TEST_12"))), QStringLiteral("_TEST_12"));
  EXPECT_EQ(view_.HitTest({5, 5000}), QString());
  EXPECT_EQ(view_.HitTest({5, view_.viewport()->height() + 2}), QString());
}

TEST_F(ObjectTreeTest, MovedServerStaysOpen) {
  view_.EnsureVisible(QStringLiteral("_TEST_12"));
  view_.Select(QStringLiteral("_TEST_12"));
  model_.MoveNode(u"_SERVER_12", u"_GROUP_0", ObjectTreeModel::Place::Last);
  EXPECT_TRUE(IsOpen(QStringLiteral("_SERVER_12")));
  EXPECT_TRUE(IsOpen(QStringLiteral("_STESTS_12")));
  EXPECT_EQ(view_.SelectedKey(), QStringLiteral("_TEST_12"));
  view_.EnsureVisible(QStringLiteral("_TEST_12"));
  EXPECT_EQ(view_.HitTest(PointOf(QStringLiteral("_TEST_12"))), QStringLiteral("_TEST_12"));
  EXPECT_EQ(Clicks(), QStringList());
}

TEST_F(ObjectTreeTest, FirstChildOfAnEmptyOpenRootIsShown) {
  TreeNodes nodes;
  const quint16 image = model_.Images().NumberOf(QStringLiteral("iSERVER"));
  nodes.SetExpanded(nodes.Insert(kTop, 0, {NodeKind::Group, 0}, "SERVERS", image), true);
  model_.Replace(std::move(nodes));
  EXPECT_TRUE(IsOpen(QStringLiteral("_GROUP_0")));
  model_.AddNode(u"_GROUP_0", u"_GROUP_1", QStringLiteral("first"), QStringLiteral("iSERVER"));
  EXPECT_TRUE(view_.visualRect(model_.IndexOf(u"_GROUP_1")).isValid());
}

TEST_F(ObjectTreeTest, EditsANodeInPlace) {
  QString stored;
  model_.SetEditHandler([&](const QString& key, const QString& text) {
    stored = key + u'=' + text;
    return true;
  });
  view_.EnsureVisible(QStringLiteral("_TEST_12"));
  view_.Select(QStringLiteral("_TEST_12"));
  view_.edit(model_.IndexOf(u"_TEST_12"));
  auto* editor = view_.findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  editor->setText(QStringLiteral("renamed"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !stored.isEmpty(); }));
  EXPECT_EQ(stored, QStringLiteral("_TEST_12=renamed"));
  EXPECT_EQ(model_.TextOf(u"_TEST_12"), QStringLiteral("renamed"));
}

}  // namespace
}  // namespace quarl::tree
