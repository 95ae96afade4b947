#include "service/Scheduler.h"

#include <algorithm>
#include <cstdlib>

namespace quarl::service {
namespace {

constexpr qint64 kStepMs = 10'000;   // a clock that is set by more was set on purpose
constexpr qint64 kSleepMs = 60'000;  // nobody asked for so long: the machine slept

/// Whose schedule this is, for messages.
QString OwnerOf(const ScheduleRecord* record, const store::PlannedServer& server, const PlanIndex& plan) {
  if (server.schedule && record == &*server.schedule) return QStringLiteral("server \"%1\"").arg(server.name);
  const store::PlannedGroup* group = plan.Group(server.idGroup);
  if (server.idGroup != 0 && group && group->schedule && record == &*group->schedule) {
    return QStringLiteral("group \"%1\"").arg(group->name);
  }
  return QStringLiteral("root group");
}

}  // namespace

/// The schedules of a plan, each once, found by their record.
class Scheduler::ScheduleTable {
 public:
  ScheduleTable(const PlanIndex& plan, const QTimeZone& zone) : plan_(plan), zone_(zone) {}

  /// The place of a server's schedule; nothing: it has none that can be used.
  std::optional<std::size_t> Of(const store::PlannedServer& server) {
    const auto known = servers_.find(server.id);
    if (known != servers_.end()) return known->second;
    return servers_[server.id] = Find(server);
  }

  std::vector<Schedule> schedules;
  std::set<QString> faults;

 private:
  std::optional<std::size_t> Find(const store::PlannedServer& server) {
    const ScheduleRecord* record = plan_.ScheduleOf(server);
    if (!record) return std::nullopt;
    const auto known = records_.find(record);
    if (known != records_.end()) return known->second;
    std::optional<std::size_t>& place = records_[record];
    if (std::optional<Schedule> schedule = Schedule::Make(*record, zone_)) {
      place = schedules.size();
      schedules.push_back(*std::move(schedule));
    } else {
      faults.insert(QStringLiteral("The schedule of the %1 is enabled but has no interval (%2 of unit %3): its tests"
                                   " are not scheduled.")
                        .arg(OwnerOf(record, server, plan_), QString::number(record->deltaTime),
                             QString::number(record->deltaType)));
    }
    return place;
  }

  const PlanIndex& plan_;
  const QTimeZone& zone_;
  std::unordered_map<qint32, std::optional<std::size_t>> servers_;
  std::unordered_map<const ScheduleRecord*, std::optional<std::size_t>> records_;
};

Scheduler::Scheduler(const Clock& clock, QTimeZone zone)
    : clock_(clock), zone_(std::move(zone)), lastNowMs_(clock.NowMs()), lastSteadyMs_(clock.SteadyMs()) {}

QStringList Scheduler::SetPlan(const PlanIndex& plan) {
  FollowClock();
  ScheduleTable table(plan, zone_);
  std::unordered_map<qint32, Entry> before;
  before.swap(tests_);
  tests_.reserve(plan.All().tests.size());
  queue_ = {};
  scheduled_ = 0;
  const std::vector<Schedule> schedulesBefore = std::exchange(schedules_, {});
  std::vector<std::pair<qint32, Entry*>> anew;
  for (const store::PlannedTest& test : plan.All().tests) {
    const store::PlannedServer* server = plan.Server(test.idServer);
    const std::optional<std::size_t> schedule = server ? table.Of(*server) : std::nullopt;
    Entry& entry = tests_[test.id];
    const auto old = before.find(test.id);
    if (old != before.end()) entry = old->second;
    const bool same = entry.schedule && schedule && schedulesBefore[*entry.schedule] == table.schedules[*schedule];
    entry.schedule = schedule;
    entry.running = running_.contains(test.id);  // an id that was gone for a while may still run
    if (!schedule) continue;
    ++scheduled_;
    if (same) {
      queue_.push({entry.dueMs, test.id, entry.version});
    } else {
      anew.emplace_back(test.id, &entry);
    }
  }
  schedules_ = std::move(table.schedules);
  for (const auto& [id, entry] : anew) Plan(id, *entry, clock_.NowMs());
  QStringList faults;
  for (const QString& fault : table.faults) {
    if (!told_.contains(fault)) faults.append(fault);
  }
  told_ = std::move(table.faults);
  return faults;
}

void Scheduler::Plan(qint32 idTest, Entry& entry, qint64 fromMs) {
  entry.dueMs = schedules_[*entry.schedule].Next(fromMs, PhaseOf(idTest));
  queue_.push({entry.dueMs, idTest, ++entry.version});
}

void Scheduler::PlanAll(qint64 fromMs) {
  queue_ = {};
  for (auto& [id, entry] : tests_) {
    if (entry.schedule) Plan(id, entry, fromMs);
  }
}

void Scheduler::FollowClock() {
  const qint64 nowMs = clock_.NowMs();
  const qint64 steadyMs = clock_.SteadyMs();
  const qint64 passed = steadyMs - std::exchange(lastSteadyMs_, steadyMs);
  const qint64 shown = nowMs - std::exchange(lastNowMs_, nowMs);
  if (passed > kSleepMs || std::llabs(shown - passed) > kStepMs) PlanAll(nowMs);
}

bool Scheduler::IsCurrent(const Place& place) const {
  const auto at = tests_.find(place.idTest);
  return at != tests_.end() && at->second.schedule && at->second.version == place.version;
}

std::optional<Scheduler::Turn> Scheduler::Take() {
  FollowClock();
  std::optional<Turn> turn = TakeDemanded();
  return turn ? turn : TakeDue();
}

std::optional<Scheduler::Turn> Scheduler::TakeDemanded() {
  while (!demands_.empty()) {
    const qint32 id = demands_.front();
    demands_.pop_front();
    const auto at = tests_.find(id);
    if (at == tests_.end() || !at->second.demanded || at->second.running) continue;  // Finished() asks for it again
    at->second.demanded = false;
    Start(id, at->second);
    return Turn{id, true};
  }
  return std::nullopt;
}

std::optional<Scheduler::Turn> Scheduler::TakeDue() {
  const qint64 nowMs = clock_.NowMs();
  while (!queue_.empty() && queue_.top().dueMs <= nowMs) {
    const Place place = queue_.top();
    queue_.pop();
    if (!IsCurrent(place)) continue;
    Entry& entry = tests_[place.idTest];
    Plan(place.idTest, entry, std::max(place.dueMs + 1, nowMs));
    if (entry.running) {
      ++skipped_;
      continue;
    }
    late_.Count(nowMs - place.dueMs);
    Start(place.idTest, entry);
    return Turn{place.idTest, false};
  }
  return std::nullopt;
}

void Scheduler::Start(qint32 idTest, Entry& entry) {
  entry.running = true;
  running_.insert(idTest);
  ++started_;
}

bool Scheduler::Finished(qint32 idTest) {
  running_.erase(idTest);
  const auto at = tests_.find(idTest);
  if (at == tests_.end()) return false;
  at->second.running = false;
  if (at->second.demanded) demands_.push_back(idTest);
  return at->second.demanded;
}

bool Scheduler::Demand(qint32 idTest) {
  const auto at = tests_.find(idTest);
  if (at == tests_.end()) return false;
  if (!at->second.demanded && !at->second.running) demands_.push_back(idTest);
  at->second.demanded = true;
  return true;
}

std::optional<qint64> Scheduler::UntilNextMs() {
  FollowClock();
  if (!demands_.empty()) return 0;
  while (!queue_.empty() && !IsCurrent(queue_.top())) queue_.pop();
  if (queue_.empty()) return std::nullopt;
  return std::max<qint64>(0, queue_.top().dueMs - clock_.NowMs());
}

}  // namespace quarl::service
