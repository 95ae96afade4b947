#pragma once

#include <QStringList>
#include <QTimeZone>
#include <deque>
#include <optional>
#include <queue>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/Clock.h"
#include "service/Lateness.h"
#include "service/PlanIndex.h"
#include "service/Schedule.h"

namespace quarl::service {

/// Says which test is to be run next. Due times are calendar times; a test that runs is not given out again before it
/// has finished, and a turn that comes meanwhile is skipped. Turns that nobody was there for (the machine slept, its
/// clock was set by more than ten seconds) are not made up for: every test waits for its next one, so that they do not
/// come all at once.
class Scheduler {
 public:
  Scheduler(const Clock& clock, QTimeZone zone);

  /// Follows a changed configuration: tests keep their due time while their schedule is the same, and what runs goes on
  /// running. The plan is not kept.
  /// @return a line for each schedule in force that has no interval; each is told once, until it is put right.
  [[nodiscard]] QStringList SetPlan(const PlanIndex& plan);

  struct Turn {
    qint32 idTest = 0;
    bool demanded = false;
  };
  /// The next test to start now, which counts as running from here on: those that were demanded in the order of the
  /// demands, then those due, the longest due first. Nothing: none is.
  [[nodiscard]] std::optional<Turn> Take();
  /// True: it was demanded again meanwhile.
  [[nodiscard]] bool Finished(qint32 idTest);
  /// Runs a test ahead of its turn, once more if it runs already. False: there is no such test.
  bool Demand(qint32 idTest);
  /// Milliseconds until there is something to take, 0 when there is; nothing: no test is scheduled.
  [[nodiscard]] std::optional<qint64> UntilNextMs();

  std::size_t Tests() const { return tests_.size(); }
  std::size_t Scheduled() const { return scheduled_; }
  std::size_t Running() const { return running_.size(); }
  quint64 Started() const { return started_; }
  quint64 Skipped() const { return skipped_; }
  const Lateness& Late() const { return late_; }

 private:
  struct Entry {
    std::optional<std::size_t> schedule;  // in schedules_
    qint64 dueMs = 0;
    quint32 version = 0;  // of dueMs
    bool running = false;
    bool demanded = false;
  };
  struct Place {
    qint64 dueMs;
    qint32 idTest;
    quint32 version;
    bool operator>(const Place& other) const { return dueMs > other.dueMs; }
  };
  using Queue = std::priority_queue<Place, std::vector<Place>, std::greater<>>;
  class ScheduleTable;

  std::optional<Turn> TakeDemanded();
  std::optional<Turn> TakeDue();
  void Start(qint32 idTest, Entry& entry);
  void Plan(qint32 idTest, Entry& entry, qint64 fromMs);
  /// Sees whether the calendar time went on as time did, and plans all turns anew when it did not.
  void FollowClock();
  void PlanAll(qint64 fromMs);
  bool IsCurrent(const Place& place) const;

  const Clock& clock_;
  QTimeZone zone_;
  std::vector<Schedule> schedules_;
  std::unordered_map<qint32, Entry> tests_;
  std::unordered_set<qint32> running_;
  Queue queue_;
  std::deque<qint32> demands_;
  std::set<QString> told_;
  qint64 lastNowMs_, lastSteadyMs_;
  std::size_t scheduled_ = 0;
  quint64 started_ = 0;
  quint64 skipped_ = 0;
  Lateness late_;
};

}  // namespace quarl::service
