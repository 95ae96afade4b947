#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <string>
#include <vector>

#include "Goals.h"

namespace {

// Shows the runs as usual and keeps the medians of their repetitions.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    benchmark::ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      if (run.error_occurred) {
        failed_ = true;
        continue;
      }
      const std::string name = run.run_name.function_name + (run.run_name.args.empty() ? "" : "/") + run.run_name.args;
      // A manual time is the CPU time of another process.
      const double time = run.run_name.time_type.empty() ? run.cpu_accumulated_time : run.real_accumulated_time;
      samples_[name].push_back(time / static_cast<double>(run.iterations) * 1e9);
      for (const auto& [counter, value] : run.counters) samples_[name + ":" + counter].push_back(value);
    }
  }

  bool AnyFailed() const { return failed_; }

  quarl::bench::Medians Medians() {
    quarl::bench::Medians medians;
    for (auto& [name, values] : samples_) {
      const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
      std::nth_element(values.begin(), middle, values.end());
      medians[name] = *middle;
    }
    return medians;
  }

 private:
  std::map<std::string, std::vector<double>> samples_;
  bool failed_ = false;
};

}  // namespace

// Runs the benchmarks in turns, so that a disturbance hits what is compared alike, and ends with the goals' table.
// Exit code 1: a goal is missed, or a benchmark could not run.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  std::vector<char*> arguments(argv, argv + argc);
  std::string repetitions = "--benchmark_repetitions=9";
  std::string interleaved = "--benchmark_enable_random_interleaving=true";
  std::string minTime = "--benchmark_min_time=0.1";
  arguments.insert(arguments.begin() + 1, {repetitions.data(), interleaved.data(), minTime.data()});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  int qtCount = 1;
  const QApplication app(qtCount, argv);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const int missed = quarl::bench::PrintGoals(reporter.Medians());
  return missed == 0 && !reporter.AnyFailed() ? 0 : 1;
}
