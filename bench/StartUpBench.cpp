#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "BenchStore.h"

namespace quarl::bench {
namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

struct Cost {
  double wall = -1;  // seconds; below 0: the program failed
  double cpu = 0;
};

// Runs a program to its end.
Cost CostOf(const char* program) {
  const auto begin = std::chrono::steady_clock::now();
  char* arguments[] = {const_cast<char*>(program), nullptr};
  pid_t child = 0;
  if (posix_spawn(&child, program, nullptr, nullptr, arguments, environ) != 0) return {};
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) return {};
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
  return {wall.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime)};
}

void Start(benchmark::State& state, const char* program, const QString& store) {
  qputenv("QUARL_STORE", (QStringLiteral("sqlite:") + store).toUtf8());
  double cpu = 0;
  for (auto _ : state) {
    const Cost cost = CostOf(program);
    if (cost.wall < 0) return state.SkipWithError("the program did not come to its first paint");
    state.SetIterationTime(cost.wall);
    cpu += cost.cpu;
  }
  state.counters["cpu_ms"] = benchmark::Counter(cpu * 1e3, benchmark::Counter::kAvgIterations);
}

void StartEmptyWindow(benchmark::State& state) {
  Start(state, QUARL_BENCH_WINDOW, QString());
}
void StartConsoleWithoutData(benchmark::State& state) {
  Start(state, QUARL_BENCH_CONSOLE, BenchStore::Of(0).Path());
}
void StartConsole(benchmark::State& state) {
  Start(state, QUARL_BENCH_CONSOLE, BenchStore::Of(static_cast<int>(state.range(0))).Path());
}
// Many short turns instead of few long ones: other programs disturb the three alike.
void InTurns(benchmark::internal::Benchmark* start) {
  start->UseManualTime()->Iterations(1)->Repetitions(40)->Unit(benchmark::kMillisecond);
}
BENCHMARK(StartEmptyWindow)->Apply(InTurns);
BENCHMARK(StartConsoleWithoutData)->Apply(InTurns);
BENCHMARK(StartConsole)->Arg(10000)->Apply(InTurns);

}  // namespace
}  // namespace quarl::bench
