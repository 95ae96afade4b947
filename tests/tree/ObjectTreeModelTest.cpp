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
    static const QStringList parts{Q("a"), Q("B"), Q("ä"), Q("TESTS"), Q("\U0001F5A5"), QString()};
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
    const QString image = Q("iTEST%1").arg(Number(6));  // 0 is none
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

NodeKind KindOfLetter(QChar letter) {
  return letter == u'g' ? NodeKind::Group : letter == u's' ? NodeKind::Server : NodeKind::AlertsFolder;
}

TEST(ObjectTreeModel, SortsInsertedAndMovedNodes) {
  // Children as "kind letter + text", e.g. "gA": a group named A.
  const std::tuple<const char*, const char*, int> cases[] = {
      {"", "gA", 0},        {"gA gC", "gB", 1},      {"gA gC sA", "gZ", 2}, {"sA sC fALERTS", "sZ", 2},
      {"fALERTS", "sA", 0}, {"sZ sb", "sa", 1},      {"sz sé", "sè", 1},    {"sA sB sB sC", "sB", 1},
      {"gA sA", "sZ", 0},   {"sM sA sZ", "sB", 0},   {"sA sZ sB", "sC", 1}, {"gA gC", "g", 0},
      {"g10 g2", "g1", 0},  {"gÄpfel", "gZebra", 0}, {"gB gA gC", "gAA", 0}};
  for (const auto& [there, name, row] : cases) {
    SCOPED_TRACE(name);
    const QStringList children = Words(there);
    const QString added = QString::fromUtf8(name);
    ObjectTreeModel model(TestIcon);
    const QString root = NodeKey::kRoot.toString(), other = Q("_GROUP_900");
    model.AddNode({}, root, Q("SERVERS"), Q("iSERVERGROUP"));
    model.AddNode({}, other, Q("elsewhere"), Q("iSERVERGROUP"));
    for (qint32 i = 0; i < children.size(); ++i) {
      model.AddNode(root, NodeKey::Make(KindOfLetter(children[i][0]), i + 1), children[i].mid(1), Q("iSERVER"));
    }
    const QString inserted = NodeKey::Make(KindOfLetter(added[0]), 100);
    model.InsertSorted(root, inserted, added.mid(1), Q("iSERVER"));
    EXPECT_EQ(model.IndexOf(inserted).row(), row);

    model.MoveNode(inserted, other, Place::Last);
    model.MoveNode(inserted, root, Place::Sorted);
    EXPECT_EQ(model.IndexOf(inserted).row(), row);
    model.MoveNode(inserted, root, Place::Last);
    model.MoveNode(inserted, root, Place::Sorted);
    EXPECT_EQ(model.IndexOf(inserted).row(), row);
  }
}

TEST(ObjectTreeModel, RefusesWhatIsNoNode) {
  ObjectTreeModel model(TestIcon);
  const QString image = Q("iSERVER"), text = Q("t");
  model.AddNode({}, u"_GROUP_0", text, image);
  for (const QString& key : {Q("_SERVER_01"), Q("_SERVER_"), Q("x"), QString()}) {
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
    EXPECT_EQ(error.Description(), Q("There is already a node with the key \"_GROUP_0\"."));
  }
}

TEST(ObjectTreeModel, LongLivedTreeKeepsItsSize) {
  ObjectTreeModel model(TestIcon);
  model.AddNode({}, u"_GROUP_0", Q("SERVERS"), Q("iSERVERGROUP"));
  const QString text(1000, u'n');
  std::size_t early = 0;
  for (qint32 round = 1; round <= 20000; ++round) {
    const QString server = NodeKey::Make(NodeKind::Server, round);
    const QString folder = NodeKey::Make(NodeKind::TestsFolder, round);
    model.InsertSorted(u"_GROUP_0", server, text, Q("iSERVER"));
    model.AddNode(server, folder, Q("TESTS"), Q("iTEST"));
    model.AddNode(folder, NodeKey::Make(NodeKind::Test, round), text, Q("iTEST1"));
    if (round > 10) model.RemoveNode(NodeKey::Make(NodeKind::Server, round - 10));
    if (round == 5000) early = model.MemoryBytes();
  }
  EXPECT_EQ(model.Count(), 31U);
  EXPECT_LE(model.MemoryBytes(), 2 * early);
  EXPECT_LE(model.MemoryBytes(), 8U << 20);
}

}  // namespace
}  // namespace quarl::tree
