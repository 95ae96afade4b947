#include <benchmark/benchmark.h>

#include <QDateTime>
#include <memory>
#include <stdexcept>
#include <tuple>

#include "BenchStore.h"
#include "service/PlanIndex.h"
#include "service/Recorder.h"
#include "service/Scheduler.h"

namespace quarl::bench {
namespace {

constexpr int kServers = 10'000;
constexpr int kTests = 5 * kServers;
constexpr int kBatch = 5'000;  // what the recorder writes at once at most

/// A recorder of the store of 10,000 servers, as the service has it.
struct BenchRecorder {
  BenchRecorder() {
    const store::ServiceInstance me{
        .id = id, .process = ProcessIdentity::Current(), .startedMs = 0, .beatMs = clock.NowMs(), .state = 4};
    if (store.Claim(me, 0)) throw std::runtime_error("the store has a service");
    recorder.Load(store.ReadStates());
    recorder.SetPlan(plan);
    if (!recorder.Flush(id)) throw std::runtime_error("the store was lost");
  }
  const QString id = QStringLiteral("bench");
  SystemClock clock;
  store::ServiceStore& store = BenchStore::Of(kServers).Stores().Service();
  service::PlanIndex plan{store.ReadPlan()};
  service::DirectPolicy policy{QTimeZone::utc()};
  service::Recorder recorder{store, policy, clock};
};

// CPU of a result from the moment it is there to the end of the transaction that holds it, tests in no order.
void StoreResults(benchmark::State& state) {
  static BenchRecorder bench;
  qint32 next = 0;
  const service::CheckOutcome outcome{.state = store::TestState::Passed,
                                      .text = QStringLiteral("Connected to port 443 within 12 ms"),
                                      .performance = QStringLiteral("time=0.012s;;;0;10")};
  for (auto _ : state) {
    for (int i = 0; i < kBatch; ++i) {
      next = (next + 7919) % kTests;
      bench.recorder.Add(next + 1, outcome);
    }
    if (!bench.recorder.Flush(bench.id)) state.SkipWithError("the store was lost");
  }
  state.counters["ns_a_result"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBatch * 1e-9,
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(StoreResults)->Unit(benchmark::kMillisecond);

/// A clock that goes on as it is told.
class BenchClock : public Clock {
 public:
  qint64 NowMs() const override { return now; }
  qint64 now = 1'700'000'000'000;
};

// CPU of one turn of a test in the due queue of 50,000, without the test.
void ScheduleTurns(benchmark::State& state) {
  const service::PlanIndex plan = [] {
    store::Plan all = BenchStore::Of(kServers).Stores().Service().ReadPlan();
    all.groups.at(0).schedule = ScheduleRecord{true, QDate(2020, 1, 1), QTime(0, 0), 5, 1};
    return service::PlanIndex(std::move(all));
  }();
  BenchClock clock;
  service::Scheduler scheduler(clock, QTimeZone::utc());
  std::ignore = scheduler.SetPlan(plan);
  for (auto _ : state) {
    clock.now += 1000;
    while (const auto turn = scheduler.Take()) std::ignore = scheduler.Finished(turn->idTest);
  }
  state.counters["a_turn"] = benchmark::Counter(static_cast<double>(scheduler.Started()),
                                                benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(ScheduleTurns)->Unit(benchmark::kMillisecond);

// What a change of the configuration costs the service.
void ReadPlan(benchmark::State& state) {
  store::ServiceStore& store = BenchStore::Of(kServers).Stores().Service();
  for (auto _ : state) benchmark::DoNotOptimize(service::PlanIndex(store.ReadPlan()));
}
BENCHMARK(ReadPlan)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quarl::bench
