#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QMap>
#include <random>

#include "base/NodeKey.h"
#include "tree/ObjectTreeModel.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

using Place = ObjectTreeModel::Place;

// The same tree kept in the plainest way.
class PlainTree {
 public:
  struct Node {
    QString text, image, parent;
  };

  bool Has(const QString& key) const { return nodes_.contains(key); }
  const QMap<QString, Node>& Nodes() const { return nodes_; }
  const QStringList& Children(const QString& key) const { return children_[key]; }

  void Add(const QString& parent, const QString& key, const QString& text, const QString& image, Place place) {
    nodes_[key] = {text, image, parent};
    Link(parent, key, place);
  }
  void SetText(const QString& key, const QString& text) { nodes_[key].text = text; }
  void Remove(const QString& key) {
    const QStringList below = children_[key];
    for (const QString& child : below) Remove(child);
    children_[nodes_[key].parent].removeOne(key);
    children_.remove(key);
    nodes_.remove(key);
  }
  void Move(const QString& key, const QString& parent, Place place) {
    children_[nodes_[key].parent].removeOne(key);
    nodes_[key].parent = parent;
    Link(parent, key, place);
  }
  bool IsBelow(QString key, const QString& ancestor) const {
    while (!key.isEmpty() && key != ancestor) key = nodes_[key].parent;
    return key == ancestor;
  }

 private:
  void Link(const QString& parent, const QString& key, Place place) {
    QStringList& siblings = children_[parent];
    qsizetype row = place == Place::Last ? siblings.size() : 0;
    const QByteArray text = nodes_[key].text.toUtf8();
    while (row < siblings.size() && NodeKey::KindOf(siblings[row]) == NodeKey::KindOf(key) &&
           nodes_[siblings[row]].text.toUtf8() < text) {
      ++row;
    }
    siblings.insert(row, key);
  }

  QMap<QString, Node> nodes_;
  mutable QMap<QString, QStringList> children_;
};

void ExpectSame(const ObjectTreeModel& model, const PlainTree& plain, const QString& parent = {}) {
  ASSERT_EQ(model.ChildrenOf(parent), plain.Children(parent)) << qPrintable(parent);
  for (const QString& key : plain.Children(parent)) {
    const QModelIndex index = model.IndexOf(key);
    ASSERT_EQ(model.KeyOf(index), key);
    ASSERT_EQ(index.data().toString(), plain.Nodes()[key].text);
    ASSERT_EQ(model.ImageKeyOf(key), plain.Nodes()[key].image);
    ASSERT_EQ(model.ParentOf(key), parent);
    ASSERT_EQ(index.row(), plain.Children(parent).indexOf(key));
    ASSERT_EQ(model.index(index.row(), 0, index.parent()), index);
    ExpectSame(model, plain, key);
  }
}

class RandomOperations : public ::testing::TestWithParam<unsigned> {
 protected:
  int Number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
  QString AnyKey() {
    static constexpr std::array kinds{NodeKind::Group,        NodeKind::Server, NodeKind::Server, NodeKind::TestsFolder,
                                      NodeKind::AlertsFolder, NodeKind::Test,   NodeKind::Alert};
    return NodeKey::Make(kinds.at(static_cast<std::size_t>(Number(kinds.size()))), Number(60));
  }
  QString AnyNode() {
    if (plain_.Nodes().isEmpty() || Number(20) == 0) return {};
    return std::next(plain_.Nodes().begin(), Number(static_cast<int>(plain_.Nodes().size()))).key();
  }
  QString AnyText() {
    static const QStringList parts{QStringLiteral("a"),     QStringLiteral("B"),          QStringLiteral("ä"),
                                   QStringLiteral("TESTS"), QStringLiteral("\U0001F5A5"), QString()};
    return parts.at(Number(6)) + (Number(4) == 0 ? QString(Number(3000), u'x') : QString::number(Number(50)));
  }

  void Step() {
    const Place place = Number(3) == 0 ? Place::Last : Place::Sorted;
    switch (Number(10)) {
      case 0:
        return Rename();
      case 1:
      case 2:
        return Remove();
      case 3:
      case 4:
        return Move(place);
      default:
        return Add(place);
    }
  }

  void Add(Place place) {
    const QString key = AnyKey(), parent = AnyNode(), text = AnyText();
    const QString image = QStringLiteral("iTEST%1").arg(Number(6));  // 0 is none
    const auto add = [&] {
      place == Place::Last ? model_.AddNode(parent, key, text, image) : model_.InsertSorted(parent, key, text, image);
    };
    if (plain_.Has(key) || image.endsWith(u'0')) {
      EXPECT_THROW(add(), Error);
      return;
    }
    add();
    plain_.Add(parent, key, text, image, place);
  }
  void Rename() {
    const QString key = AnyNode(), text = AnyText();
    if (key.isEmpty()) return;
    model_.SetText(key, text);
    plain_.SetText(key, text);
  }
  void Remove() {
    const QString key = AnyKey();  // most are no nodes, so that the tree grows
    if (!plain_.Has(key)) {
      EXPECT_THROW(model_.RemoveNode(key), Error);
      return;
    }
    model_.RemoveNode(key);
    plain_.Remove(key);
  }
  void Move(Place place) {
    const QString key = AnyNode(), parent = AnyNode();
    if (key.isEmpty()) return;
    if (plain_.IsBelow(parent, key)) {
      EXPECT_THROW(model_.MoveNode(key, parent, place), Error);
      return;
    }
    model_.MoveNode(key, parent, place);
    plain_.Move(key, parent, place);
  }

  std::mt19937 random_{GetParam()};
  ObjectTreeModel model_{TestIcon};
  PlainTree plain_;
};

TEST_P(RandomOperations, LeaveTheTreeOfThePlainOne) {
  QAbstractItemModelTester tester(&model_, QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (int step = 0; step < 3000; ++step) {
    Step();
    if (step % 50 == 0) ExpectSame(model_, plain_);
    if (HasFatalFailure()) return;
  }
  ExpectSame(model_, plain_);
  EXPECT_EQ(model_.Count(), static_cast<std::size_t>(plain_.Nodes().size()));
  EXPECT_GT(model_.Count(), 20U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomOperations, ::testing::Values(1U, 2U, 3U, 4U));

// Children as "kind letter + text", e.g. "gA": a group named A.
struct OrderCase {
  QStringList children;
  QString added;
  int row;
};

class SortedPlace : public ::testing::TestWithParam<OrderCase> {};

NodeKind KindOfLetter(QChar letter) {
  return letter == u'g' ? NodeKind::Group : letter == u's' ? NodeKind::Server : NodeKind::AlertsFolder;
}

TEST_P(SortedPlace, InsertedAndMoved) {
  const OrderCase& c = GetParam();
  ObjectTreeModel model(TestIcon);
  const QString root = NodeKey::kRoot.toString(), other = QStringLiteral("_GROUP_900");
  model.AddNode({}, root, QStringLiteral("SERVERS"), QStringLiteral("iSERVERGROUP"));
  model.AddNode({}, other, QStringLiteral("elsewhere"), QStringLiteral("iSERVERGROUP"));
  for (qint32 i = 0; i < c.children.size(); ++i) {
    model.AddNode(root, NodeKey::Make(KindOfLetter(c.children[i][0]), i + 1), c.children[i].mid(1),
                  QStringLiteral("iSERVER"));
  }
  const QString inserted = NodeKey::Make(KindOfLetter(c.added[0]), 100);
  model.InsertSorted(root, inserted, c.added.mid(1), QStringLiteral("iSERVER"));
  EXPECT_EQ(model.IndexOf(inserted).row(), c.row);

  model.MoveNode(inserted, other, Place::Last);
  model.MoveNode(inserted, root, Place::Sorted);
  EXPECT_EQ(model.IndexOf(inserted).row(), c.row);
  model.MoveNode(inserted, root, Place::Last);
  model.MoveNode(inserted, root, Place::Sorted);
  EXPECT_EQ(model.IndexOf(inserted).row(), c.row);
}

QStringList Words(const char* text) {
  return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

INSTANTIATE_TEST_SUITE_P(Orders, SortedPlace,
                         ::testing::Values(OrderCase{{}, QStringLiteral("gA"), 0},
                                           OrderCase{Words("gA gC"), QStringLiteral("gB"), 1},
                                           OrderCase{Words("gA gC sA"), QStringLiteral("gZ"), 2},
                                           OrderCase{Words("sA sC fALERTS"), QStringLiteral("sZ"), 2},
                                           OrderCase{Words("fALERTS"), QStringLiteral("sA"), 0},
                                           OrderCase{Words("sZ sb"), QStringLiteral("sa"), 1},
                                           OrderCase{Words("sz sé"), QStringLiteral("sè"), 1},
                                           OrderCase{Words("sA sB sB sC"), QStringLiteral("sB"), 1},
                                           OrderCase{Words("gA sA"), QStringLiteral("sZ"), 0},  // a group ends the walk
                                           OrderCase{Words("sM sA sZ"), QStringLiteral("sB"), 0},
                                           OrderCase{Words("sA sZ sB"), QStringLiteral("sC"), 1}));

TEST(ObjectTreeModel, RefusesWhatIsNoNode) {
  ObjectTreeModel model(TestIcon);
  const QString image = QStringLiteral("iSERVER"), text = QStringLiteral("t");
  model.AddNode({}, u"_GROUP_0", text, image);
  for (const QString& key :
       {QStringLiteral("_SERVER_01"), QStringLiteral("_SERVER_"), QStringLiteral("x"), QString()}) {
    EXPECT_THROW(model.AddNode(u"_GROUP_0", key, text, image), Error) << qPrintable(key);
  }
  EXPECT_THROW(model.AddNode(u"_GROUP_7", u"_SERVER_1", text, image), Error);
  EXPECT_THROW(model.TextOf(u"_SERVER_1"), Error);
  EXPECT_THROW(model.MoveNode(u"_GROUP_0", u"_GROUP_0", Place::Last), Error);
  EXPECT_EQ(model.Count(), 1U);
  try {
    model.AddNode({}, u"_GROUP_0", text, image);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.Description(), QStringLiteral("There is already a node with the key \"_GROUP_0\"."));
  }
}

TEST(ObjectTreeModel, FoldersOfGroupAndServerShareTheirKey) {
  ObjectTreeModel model(TestIcon);
  model.AddNode({}, u"_GROUP_3", QStringLiteral("g"), QStringLiteral("iSERVERGROUP"));
  model.AddNode(u"_GROUP_3", u"_SERVER_3", QStringLiteral("s"), QStringLiteral("iSERVER"));
  model.AddNode(u"_SERVER_3", u"_ALERTS_3", QStringLiteral("ALERTS"), QStringLiteral("iALERT"));
  EXPECT_THROW(model.AddNode(u"_GROUP_3", u"_ALERTS_3", QStringLiteral("ALERTS"), QStringLiteral("iALERT")), Error);
  EXPECT_EQ(model.ParentOf(u"_ALERTS_3"), QStringLiteral("_SERVER_3"));
}

TEST(ObjectTreeModel, EditsTextsThroughTheHandler) {
  ObjectTreeModel model(TestIcon);
  QStringList calls;
  bool accept = true;
  model.SetEditHandler([&](const QString& key, const QString& text) {
    calls << key + u'=' + text;
    return accept;
  });
  const QString image = QStringLiteral("iTEST");
  for (const QString& key : {QStringLiteral("_SERVER_1"), QStringLiteral("_TEST_1")}) {
    model.AddNode({}, key, QStringLiteral("old"), image);
    model.setData(model.IndexOf(key), QStringLiteral("new"));
  }
  accept = false;
  EXPECT_FALSE(model.setData(model.IndexOf(u"_TEST_1"), QStringLiteral("other")));
  EXPECT_EQ(calls, Words("_SERVER_1=new _TEST_1=new _TEST_1=other"));
  EXPECT_EQ(model.TextOf(u"_TEST_1"), QStringLiteral("new"));
  EXPECT_EQ(model.TextOf(u"_SERVER_1"), QStringLiteral("new"));
}

TEST(ObjectTreeModel, LongLivedTreeKeepsItsSize) {
  ObjectTreeModel model(TestIcon);
  model.AddNode({}, u"_GROUP_0", QStringLiteral("SERVERS"), QStringLiteral("iSERVERGROUP"));
  const QString text(1000, u'n');
  std::size_t early = 0;
  for (qint32 round = 1; round <= 20000; ++round) {
    const QString server = NodeKey::Make(NodeKind::Server, round);
    const QString folder = NodeKey::Make(NodeKind::TestsFolder, round);
    model.InsertSorted(u"_GROUP_0", server, text, QStringLiteral("iSERVER"));
    model.AddNode(server, folder, QStringLiteral("TESTS"), QStringLiteral("iTEST"));
    model.AddNode(folder, NodeKey::Make(NodeKind::Test, round), text, QStringLiteral("iTEST1"));
    if (round > 10) model.RemoveNode(NodeKey::Make(NodeKind::Server, round - 10));
    if (round == 5000) early = model.MemoryBytes();
  }
  EXPECT_EQ(model.Count(), 31U);
  EXPECT_LE(model.MemoryBytes(), 2 * early);
  EXPECT_LE(model.MemoryBytes(), 8U << 20);
}

}  // namespace
}  // namespace quarl::tree
