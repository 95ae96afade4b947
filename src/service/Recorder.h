#pragma once

#include <unordered_map>
#include <unordered_set>

#include "base/Clock.h"
#include "service/AlertPolicy.h"
#include "service/CheckRunner.h"
#include "store/ServiceStore.h"

namespace quarl::service {

/// Makes states of results and has them written.
///
/// A test's state is that of its last execution. It counts as failed from the server's threshold of failures in a row
/// on, and does so until it passes once. A check that could not be made changes neither. A server counts as failed
/// while one of its tests does; its state is the worst of what its tests stand for: 3 counts as failed, 1 passed,
/// else 2. What changes is logged and told to the policy; both are written in one transaction with the results.
class Recorder {
 public:
  Recorder(store::ServiceStore& store, AlertPolicy& policy, const Clock& clock);

  /// Forgets everything and begins with what is stored. To be followed by SetPlan().
  void Load(store::StoredStates states);
  /// Follows a changed configuration. The plan is borrowed until the next one is set.
  void SetPlan(const PlanIndex& plan);

  /// Takes a result. One of a test that is not in the plan is dropped.
  void Add(qint32 idTest, const CheckOutcome& outcome);
  /// To be written with the results so far.
  void Answer(qint64 idRequest);
  void Log(store::Severity severity, const QString& description);

  /// Milliseconds until what is there is to be written: a second after the first result, 200 after the first change or
  /// line of the log, at once for 5,000 results or a request's answer; nothing: there is nothing.
  [[nodiscard]] std::optional<qint64> UntilFlushMs() const;
  /// Writes what is there in one transaction. False: the store is no longer this instance's; nothing is written then,
  /// nor when it throws StoreError, and all is kept.
  [[nodiscard]] bool Flush(const QString& instance);
  /// Messages have been written since this was asked last.
  [[nodiscard]] bool TakeHasMessages() { return std::exchange(hasMessages_, false); }

 private:
  struct Server {
    store::ServerState stored;
    std::array<int, 4> tests{};  // how many stand for each state
    int failed = 0;              // tests that count as failed
    bool hasState = false;       // in the store
  };

  struct Test {
    store::TestResult result;
    bool known = false;  // there is a result
    // Of the plan; null while there is none.
    const store::PlannedTest* planned = nullptr;
    const store::PlannedServer* server = nullptr;
    Server* state = nullptr;
  };

  void Count(Server& server, const store::TestResult* result, int by) const;
  void Apply(store::TestResult& result, const CheckOutcome& outcome, int threshold) const;
  /// Tells a change of a test or, without one, of its server; settles the server's state.
  void Settle(const store::PlannedServer& planned, Server& server, const store::PlannedTest* test,
              const store::TestResult* result);
  void LogUnmade(const store::PlannedServer& server, const store::PlannedTest& test, const QString& text);
  void DropLostTests();
  void WriteWithin(qint64 ms);
  store::ResultBatch Batch() const;

  store::ServiceStore& store_;
  AlertPolicy& policy_;
  const Clock& clock_;
  const PlanIndex* plan_ = nullptr;
  std::unordered_map<qint32, Test> tests_;
  std::unordered_map<qint32, Server> servers_;
  std::vector<qint32> dirtyTests_;  // an id may stand there twice
  std::unordered_set<qint32> dirtyServers_;
  std::vector<store::LogEntry> log_;
  std::vector<store::OutgoingMessage> messages_;
  std::vector<qint64> answered_;
  std::optional<qint64> writeBySteadyMs_;
  bool hasMessages_ = false;
};

}  // namespace quarl::service
