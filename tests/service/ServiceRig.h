#pragma once

#include <QTimeZone>
#include <deque>
#include <map>

#include "service/Service.h"
#include "store/StoreFixture.h"

namespace quarl::service {

/// A clock that goes on when it is told to, and can be set.
class RigClock : public Clock {
 public:
  qint64 NowMs() const override { return now; }
  qint64 SteadyMs() const override { return steady; }
  void Pass(qint64 ms) {
    now += ms;
    steady += ms;
  }
  qint64 now = 1'700'000'000'000;
  qint64 steady = 5'000'000;
};

/// Answers checks as it is told: at once with the next Deliver(), or never.
class ScriptedRunner : public CheckRunner {
 public:
  bool HasRoom() const override { return static_cast<int>(waiting_.size()) < room; }
  void Start(const CheckJob& job, Done done) override;
  void Abort() override { waiting_.clear(); }

  /// Tells the outcomes of all checks that wait, as they are set for their test.
  void Deliver();
  /// The ids of the tests that run, in the order of their starts.
  std::vector<qint32> Running() const;

  std::map<qint32, CheckOutcome> outcomes;  // by test; passed where nothing is set
  std::vector<CheckJob> started;
  int room = 1000;

 private:
  std::deque<std::pair<CheckJob, Done>> waiting_;
};

class ScriptedSender : public AlertSender {
 public:
  void Send(const AlertJob& job, Done done) override;
  void Abort() override { waiting_.clear(); }

  /// Tells the outcome of all messages that wait; a reason is a failure.
  void Deliver(const QString& reason = {});
  /// The subjects handed over since this was asked last, joined by "|".
  QString TakeSubjects();
  std::vector<AlertJob> sent;

 private:
  std::deque<Done> waiting_;
  std::size_t told_ = 0;
};

CheckOutcome Outcome(store::TestState state, const QString& text = {});

/// A store file with the group "edge" (1), its server "north" (2) with a group's and an own alert, and the two tests
/// "Echo" and "Page"; and everything that a service needs but time.
class ServiceRig {
 public:
  ServiceRig();
  /// A service of this store that tells its problems to problems.
  std::unique_ptr<Service> MakeService(store::ServiceStore& store);
  /// Lets time pass in steps; the runner and the sender answer after each one.
  void Run(Service& service, qint64 ms, qint64 stepMs = 1000);
  QString Log() { return store::Column(stores.Log().GetLogs(), "LogDescription"); }

  store::StoreFolder folder;
  RigClock clock;
  store::SqlStores stores;   // the service's
  store::SqlStores console;  // another user of the same file
  ScriptedRunner runner;
  ScriptedSender sender;
  QStringList problems;
  qint32 testType = 0, alertType = 0, group = 0, server = 0, echo = 0, page = 0, ownAlert = 0, groupAlert = 0;

 private:
  store::SqlSetup Setup() const;
};

}  // namespace quarl::service
