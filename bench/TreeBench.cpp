#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <map>
#include <random>

#include "BenchIcons.h"
#include "BenchStore.h"
#include "RawScan.h"
#include "tree/ObjectTree.h"
#include "tree/TreeBuilder.h"

namespace quarl::bench {
namespace {

using tree::ObjectTree;
using tree::ObjectTreeModel;
using tree::TreeBuilder;

void Stop(const QString& message) {
  qFatal("%s", qPrintable(message));
}

// A shown tree with the content of a store.
struct ShownTree {
  explicit ShownTree(int servers) {
    view.resize(300, 700);
    view.show();
    TreeBuilder(BenchStore::Of(servers).Stores(), model, Stop).LoadTree();
    QCoreApplication::processEvents();
  }
  // Kept to the program's end: a widget must not outlive the application as a static object would.
  static ShownTree& Of(int servers) {
    static std::map<int, ShownTree*> trees;
    ShownTree*& tree = trees[servers];
    if (tree == nullptr) tree = new ShownTree(servers);
    return *tree;
  }
  ObjectTreeModel model{BenchIcon};
  ObjectTree view{model};
};

int Servers(const benchmark::State& state) {
  return static_cast<int>(state.range(0));
}

void RawTree(benchmark::State& state) {
  RawScan scan(BenchStore::Of(Servers(state)).Path());
  for (auto _ : state) {
    const RawScan::Rows rows = scan.Tree();
    state.counters["rows"] = static_cast<double>(rows.Count());
  }
}
BENCHMARK(RawTree)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void StoreRead(benchmark::State& state) {
  store::SqlStores& stores = BenchStore::Of(Servers(state)).Stores();
  for (auto _ : state) benchmark::DoNotOptimize(stores.Tree().ReadTree());
}
BENCHMARK(StoreRead)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void TreePainted(benchmark::State& state) {
  store::SqlStores& stores = BenchStore::Of(Servers(state)).Stores();
  for (auto _ : state) {
    state.PauseTiming();
    auto model = std::make_unique<ObjectTreeModel>(BenchIcon);
    auto view = std::make_unique<ObjectTree>(*model);
    view->resize(300, 700);
    view->show();
    QCoreApplication::processEvents();
    state.ResumeTiming();
    TreeBuilder(stores, *model, Stop).LoadTree();
    view->viewport()->repaint();
    state.PauseTiming();
    state.counters["nodes"] = static_cast<double>(model->Count());
    state.counters["bytes_a_node"] = static_cast<double>(model->MemoryBytes()) / static_cast<double>(model->Count());
    view.reset();
    model.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(TreePainted)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

constexpr int kLookUps = 1 << 10;  // few enough that the texts stay in the cache, as one just made does

// The keys of nodes in an order that no cache foresees. Each look-up below waits for the one before, as a single one
// would.
std::vector<NodeKey::Parts> RandomKeys(int servers) {
  std::mt19937 random(1);
  std::vector<NodeKey::Parts> keys;
  for (int i = 0; i < kLookUps; ++i) {
    const auto number = static_cast<qint32>(random() % static_cast<unsigned>(servers));
    keys.push_back(i % 2 == 0 ? NodeKey::Parts{NodeKind::Server, number + 101}
                              : NodeKey::Parts{NodeKind::Test, number * 5 + 1});
  }
  return keys;
}

// Always 1, but nobody knows before the result is there.
std::size_t StepAfter(quint32 result) {
  benchmark::DoNotOptimize(result);
  return 1 + (result >> 31);
}

void ProbePacked(benchmark::State& state) {
  const ObjectTreeModel& model = ShownTree::Of(Servers(state)).model;
  const std::vector<NodeKey::Parts> keys = RandomKeys(Servers(state));
  for (auto _ : state) {
    for (std::size_t next = 0; next < keys.size();) next += StepAfter(model.Nodes().Find(keys[next]));
  }
  state.SetItemsProcessed(state.iterations() * kLookUps);
}
BENCHMARK(ProbePacked)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

void LookUpText(benchmark::State& state) {
  const ObjectTreeModel& model = ShownTree::Of(Servers(state)).model;
  std::vector<QString> keys;
  for (const NodeKey::Parts& key : RandomKeys(Servers(state))) keys.push_back(NodeKey::Make(key.kind, key.id));
  for (auto _ : state) {
    for (std::size_t next = 0; next < keys.size();) next += StepAfter(model.Contains(keys[next]) ? 1 : 0);
  }
  state.SetItemsProcessed(state.iterations() * kLookUps);
}
BENCHMARK(LookUpText)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// A batch of servers that the store does not hold, for random groups and with random names.
struct NewServers {
  static constexpr int kCount = 256;
  explicit NewServers(int servers) {
    std::mt19937 random(2);
    const auto group = [&] { return NodeKey::Make(NodeKind::Group, static_cast<qint32>(random() % 100 + 1)); };
    for (int i = 0; i < kCount; ++i) {
      keys.push_back(NodeKey::Make(NodeKind::Server, 1000000000 + i));
      groups.push_back(group());
      otherGroups.push_back(group());
      texts.push_back(QStringLiteral("server-%1x").arg(random() % static_cast<unsigned>(servers), 6, 10, QChar(u'0')));
    }
  }
  void Insert(ObjectTreeModel& model) const {
    const QString image = QStringLiteral("iSERVER");
    for (std::size_t i = 0; i < keys.size(); ++i) model.InsertSorted(groups[i], keys[i], texts[i], image);
  }
  void Move(ObjectTreeModel& model) const {
    for (std::size_t i = 0; i < keys.size(); ++i) {
      model.MoveNode(keys[i], otherGroups[i], ObjectTreeModel::Place::Sorted);
    }
  }
  void Remove(ObjectTreeModel& model) const {
    for (const QString& key : keys) model.RemoveNode(key);
  }
  std::vector<QString> keys, groups, otherGroups, texts;
};

using Step = void (NewServers::*)(ObjectTreeModel&) const;

// Inserts, moves and removes the batch; only one of the steps is timed, with the layout and paint that follow it.
void Change(benchmark::State& state, Step timed) {
  ObjectTreeModel& model = ShownTree::Of(Servers(state)).model;
  const NewServers batch(Servers(state));
  for (auto _ : state) {
    state.PauseTiming();
    for (const Step step : {&NewServers::Insert, &NewServers::Move, &NewServers::Remove}) {
      if (step == timed) state.ResumeTiming();
      (batch.*step)(model);
      QCoreApplication::processEvents();
      if (step == timed) state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * NewServers::kCount);
}
void InsertServers(benchmark::State& state) {
  Change(state, &NewServers::Insert);
}
void MoveServers(benchmark::State& state) {
  Change(state, &NewServers::Move);
}
void RemoveServers(benchmark::State& state) {
  Change(state, &NewServers::Remove);
}
BENCHMARK(InsertServers)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(MoveServers)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(RemoveServers)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quarl::bench
