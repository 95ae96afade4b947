#include "service/Recorder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "service/MessageText.h"

namespace quarl::service {
namespace {

using store::TestState;

constexpr qint64 kResultsMs = 1'000;
constexpr qint64 kNewsMs = 200;
constexpr std::size_t kFlushResults = 5'000;
constexpr std::size_t kLogLimit = 20'000;  // while the store cannot be written

/// What a test stands for in the state of its server.
TestState StandsFor(const store::TestResult* result) {
  if (!result) return TestState::NotRun;
  if (result->failed) return TestState::Failed;
  return result->state == TestState::Passed ? TestState::Passed : TestState::NotRun;
}

std::size_t PlaceOf(TestState state) {
  return static_cast<std::size_t>(state);
}

template <typename Ids>
std::vector<qint32> Sorted(const Ids& ids) {
  std::vector<qint32> sorted(ids.begin(), ids.end());
  std::sort(sorted.begin(), sorted.end());
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  return sorted;
}

}  // namespace

Recorder::Recorder(store::ServiceStore& store, AlertPolicy& policy, const Clock& clock)
    : store_(store), policy_(policy), clock_(clock) {}

void Recorder::Load(store::StoredStates states) {
  tests_.clear();
  servers_.clear();
  dirtyTests_.clear();
  dirtyServers_.clear();
  messages_.clear();
  for (store::TestResult& result : states.tests) {
    Test& test = tests_[result.idTest];
    test.result = std::move(result);
    test.known = true;
  }
  for (const store::ServerState& state : states.servers) {
    Server& server = servers_[state.idServer];
    server.stored = state;
    server.hasState = true;
  }
}

void Recorder::DropLostTests() {
  const auto lost = [this](const auto& entry) { return plan_->Test(entry.first) == nullptr; };
  std::erase_if(tests_, lost);
  std::erase_if(dirtyTests_, [this](qint32 id) { return plan_->Test(id) == nullptr; });
  std::erase_if(servers_, [this](const auto& entry) { return plan_->Server(entry.first) == nullptr; });
  std::erase_if(dirtyServers_, [this](qint32 id) { return plan_->Server(id) == nullptr; });
}

void Recorder::SetPlan(const PlanIndex& plan) {
  plan_ = &plan;
  DropLostTests();
  for (auto& [id, server] : servers_) {
    server.tests = {};
    server.failed = 0;
  }
  for (const store::PlannedTest& test : plan.All().tests) {
    Test& own = tests_[test.id];
    Server& server = servers_[test.idServer];
    own.planned = &test;
    own.server = plan.Server(test.idServer);
    own.state = &server;
    server.stored.idServer = test.idServer;
    Count(server, own.known ? &own.result : nullptr, +1);
  }
  for (auto& [id, server] : servers_) {
    if (const store::PlannedServer* planned = plan.Server(id)) Settle(*planned, server, nullptr, nullptr);
  }
}

void Recorder::Count(Server& server, const store::TestResult* result, int by) const {
  server.tests[PlaceOf(StandsFor(result))] += by;
  if (result && result->failed) server.failed += by;
}

void Recorder::Add(qint32 idTest, const CheckOutcome& outcome) {
  const auto at = tests_.find(idTest);
  if (at == tests_.end() || !at->second.server) return;
  Test& test = at->second;
  const store::PlannedServer& planned = *test.server;
  Server& server = *test.state;
  store::TestResult& result = test.result;
  const bool isNew = !std::exchange(test.known, true);
  Count(server, isNew ? nullptr : &result, -1);
  result.idTest = idTest;
  const bool failedBefore = result.failed;
  const bool unmadeBefore = !isNew && result.state == TestState::NotRun;
  Apply(result, outcome, planned.failThreshold);
  Count(server, &result, +1);
  dirtyTests_.push_back(idTest);
  if (dirtyTests_.size() > 2 * tests_.size() + kFlushResults) dirtyTests_ = Sorted(dirtyTests_);
  WriteWithin(kResultsMs);
  if (outcome.state == TestState::NotRun && !unmadeBefore) LogUnmade(planned, *test.planned, outcome.text);
  const bool changed = result.failed != failedBefore;
  Settle(planned, server, changed ? test.planned : nullptr, &result);
}

void Recorder::Apply(store::TestResult& result, const CheckOutcome& outcome, int threshold) const {
  const qint64 nowMs = clock_.NowMs();
  if (result.state != outcome.state || !result.lastExecutionMs) result.sinceMs = nowMs;
  result.state = outcome.state;
  result.lastExecutionMs = nowMs;
  result.text = outcome.text;
  result.performance = outcome.performance;
  if (outcome.state == TestState::Passed) {
    result.consecutiveFailures = 0;
    result.failed = false;
  } else if (outcome.state == TestState::Failed) {
    if (result.consecutiveFailures < std::numeric_limits<qint32>::max()) ++result.consecutiveFailures;
    if (result.consecutiveFailures >= threshold) result.failed = true;
  }
}

void Recorder::Settle(const store::PlannedServer& planned, Server& server, const store::PlannedTest* test,
                      const store::TestResult* result) {
  const store::ServerState before = server.stored;
  const bool hadState = server.hasState;
  store::ServerState& now = server.stored;
  now.idServer = planned.id;
  now.failed = server.failed > 0;
  for (const TestState state : {TestState::Passed, TestState::NotRun, TestState::Failed}) {
    if (server.tests[PlaceOf(state)] > 0) now.state = state;
  }
  server.hasState = server.tests != std::array<int, 4>{};
  const bool serverChanged = now.failed != before.failed;
  if (serverChanged) now.sinceMs = clock_.NowMs();
  if (now != before || hadState != server.hasState) {
    dirtyServers_.insert(planned.id);
    WriteWithin(kNewsMs);
  }
  // Without a test only the end of an outage is news: its beginning was told with the test.
  if (!test && !(serverChanged && before.failed)) return;

  StateChange change;
  change.server = &planned;
  change.test = test;
  change.serverChanged = serverChanged;
  change.failedTests = server.failed;
  if (test) {
    change.failed = result->failed;
    change.failures = result->consecutiveFailures;
    change.text = result->text;
  }
  change.timeMs = clock_.NowMs();
  change.sinceMs = now.failed ? now.sinceMs : before.sinceMs;
  Log(change.failed ? store::Severity::Error : store::Severity::Information, LogLineOf(change));
  for (store::OutgoingMessage& message : policy_.MessagesFor(change, *plan_)) messages_.push_back(std::move(message));
}

void Recorder::LogUnmade(const store::PlannedServer& server, const store::PlannedTest& test, const QString& text) {
  Log(store::Severity::Warning,
      QStringLiteral("%1 (%2): %3 could not be run: %4")
          .arg(OneLine(server.name), OneLine(server.address), OneLine(test.name), OneLine(text)));
}

void Recorder::Answer(qint64 idRequest) {
  answered_.push_back(idRequest);
  WriteWithin(kNewsMs);
}

void Recorder::Log(store::Severity severity, const QString& description) {
  if (log_.size() < kLogLimit) log_.push_back({clock_.NowMs(), severity, description});
  WriteWithin(kNewsMs);
}

void Recorder::WriteWithin(qint64 ms) {
  const qint64 bySteadyMs = clock_.SteadyMs() + ms;
  writeBySteadyMs_ = std::min(writeBySteadyMs_.value_or(bySteadyMs), bySteadyMs);
}

std::optional<qint64> Recorder::UntilFlushMs() const {
  if (!writeBySteadyMs_) return std::nullopt;
  if (!answered_.empty() || dirtyTests_.size() >= kFlushResults) return 0;
  return std::max<qint64>(0, *writeBySteadyMs_ - clock_.SteadyMs());
}

store::ResultBatch Recorder::Batch() const {
  store::ResultBatch batch;
  batch.tests.reserve(dirtyTests_.size());
  for (const qint32 id : Sorted(dirtyTests_)) batch.tests.push_back(tests_.at(id).result);
  for (const qint32 id : Sorted(dirtyServers_)) {
    const Server& server = servers_.at(id);
    if (server.hasState) {
      batch.servers.push_back(server.stored);
    } else {
      batch.statelessServers.push_back(id);
    }
  }
  batch.log = log_;
  batch.messages = messages_;
  batch.answered = answered_;
  return batch;
}

bool Recorder::Flush(const QString& instance) {
  if (!writeBySteadyMs_) return true;
  if (!store_.Record(instance, Batch())) return false;
  hasMessages_ = hasMessages_ || !messages_.empty();
  dirtyTests_.clear();
  dirtyServers_.clear();
  log_.clear();
  messages_.clear();
  answered_.clear();
  writeBySteadyMs_.reset();
  return true;
}

}  // namespace quarl::service
