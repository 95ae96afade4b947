#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include "BenchIcons.h"
#include "BenchStore.h"
#include "RawScan.h"
#include "tree/ContentList.h"
#include "tree/ContentViews.h"

namespace quarl::bench {
namespace {

constexpr int kServers = 100000;  // the log of a bench store is as long

void RawServerList(benchmark::State& state) {
  RawScan scan(BenchStore::Of(kServers).Path());
  for (auto _ : state) benchmark::DoNotOptimize(scan.Servers());
}
BENCHMARK(RawServerList)->Unit(benchmark::kMillisecond);

void RawLog(benchmark::State& state) {
  RawScan scan(BenchStore::Of(kServers).Path());
  for (auto _ : state) benchmark::DoNotOptimize(scan.Log());
}
BENCHMARK(RawLog)->Unit(benchmark::kMillisecond);

template <typename Fill>
void Refill(benchmark::State& state, Fill fill) {
  tree::ContentListModel model(BenchIcon);
  tree::ContentList view(model);
  view.resize(700, 700);
  view.show();
  tree::ContentViews views(BenchStore::Of(kServers).Stores(), model);
  for (auto _ : state) {
    fill(views);
    view.viewport()->repaint();
  }
  state.counters["rows"] = model.rowCount();
}

void ServerListPainted(benchmark::State& state) {
  Refill(state, [](tree::ContentViews& views) { views.ShowServerList(0); });
}
BENCHMARK(ServerListPainted)->Unit(benchmark::kMillisecond);

void LogPainted(benchmark::State& state) {
  Refill(state, [](tree::ContentViews& views) { views.ShowLogList(); });
}
BENCHMARK(LogPainted)->Unit(benchmark::kMillisecond);

// The tests of every server, by one query a server.
void RecordSets(benchmark::State& state) {
  const auto servers = static_cast<qint32>(state.range(0));
  store::TestStore& tests = BenchStore::Of(servers).Stores().Tests();
  qint64 read = 0;
  for (auto _ : state) {
    for (qint32 server = 101; server <= 100 + servers; ++server) {
      store::RecordSet records = tests.GetTestsByServer(server);
      const int id = records.Column("IDTest");
      const int name = records.Column("TestName");
      for (; !records.Eof(); records.MoveNext(), ++read) {
        benchmark::DoNotOptimize(records.Integer(id));
        benchmark::DoNotOptimize(records.Utf8(name).size());
      }
    }
  }
  state.SetItemsProcessed(read);
}
BENCHMARK(RecordSets)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quarl::bench
