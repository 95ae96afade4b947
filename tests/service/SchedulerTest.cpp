// Which test runs next: spread, overlap, demands, changed configurations, clocks that are set.
#include <QDateTime>
#include <algorithm>
#include <numeric>
#include <tuple>

#include "service/Scheduler.h"
#include "service/ServiceRig.h"

namespace quarl::service {
namespace {

ScheduleRecord Every(int delta, DeltaType type) {
  return {true, QDate(2020, 1, 1), QTime(0, 0), static_cast<qint16>(delta), static_cast<qint16>(type)};
}

/// A plan of one server with tests of these ids.
PlanIndex PlanOf(const std::vector<qint32>& tests, const ScheduleRecord& schedule) {
  store::Plan plan;
  plan.groups = {{0, {}, schedule}};
  plan.servers = {{1, 0, QStringLiteral("s"), {}, 3, {}}};
  for (const qint32 id : tests) plan.tests.push_back({id, 1, {}, {}, {}});
  return PlanIndex(std::move(plan));
}

std::vector<qint32> Ids(int count, int stride = 1, int first = 1) {
  std::vector<qint32> ids;
  for (int i = 0; i < count; ++i) ids.push_back(first + i * stride);
  return ids;
}

class SchedulerTest : public ::testing::Test {
 protected:
  void Set(const PlanIndex& plan) { EXPECT_TRUE(scheduler_->SetPlan(plan).isEmpty()); }
  /// The tests to start now, by id; each one ends at once unless it is to go on.
  std::vector<qint32> TakeAll(bool finish = true) {
    std::vector<qint32> ids;
    while (const auto turn = scheduler_->Take()) ids.push_back(turn->idTest);
    if (finish) {
      for (const qint32 id : ids) std::ignore = scheduler_->Finished(id);
    }
    return ids;
  }
  /// How many tests start in each second from now on.
  std::vector<int> Starts(int seconds) {
    std::vector<int> starts;
    for (int i = 0; i < seconds; ++i) {
      clock_.Pass(1000);
      starts.push_back(static_cast<int>(TakeAll().size()));
    }
    return starts;
  }
  static int Sum(const std::vector<int>& starts) { return std::accumulate(starts.begin(), starts.end(), 0); }

  RigClock clock_;
  std::optional<Scheduler> scheduler_{std::in_place, clock_, QTimeZone::utc()};
};

TEST_F(SchedulerTest, AfterARestartTheBusiestSecondHoldsLessThanTwiceTheMean) {
  const struct {
    std::vector<qint32> ids;
    ScheduleRecord schedule;
    int seconds;  // over which the tests are spread
  } cases[] = {
      {Ids(100'000), Every(5, DeltaType::Minutes), 300},
      {Ids(3'000, 5), Every(5, DeltaType::Minutes), 300},
      {Ids(3'000, 13), Every(5, DeltaType::Minutes), 300},
      {Ids(3'000, 1597), Every(5, DeltaType::Minutes), 300},
      {Ids(20'000, 2), Every(1, DeltaType::Hours), 3600},
      {Ids(500, 7, 2'000'000'000), Every(1, DeltaType::Minutes), 60},
  };
  for (const auto& [ids, schedule, seconds] : cases) {
    for (const int started : {0, 17'123}) {  // when the restart happens
      clock_.Pass(started);
      scheduler_.emplace(clock_, QTimeZone::utc());
      Set(PlanOf(ids, schedule));
      const std::vector<int> starts = Starts(seconds);
      const double mean = static_cast<double>(ids.size()) / seconds;
      EXPECT_EQ(Sum(starts), static_cast<int>(ids.size()));
      EXPECT_LT(*std::max_element(starts.begin(), starts.end()), 2 * mean) << ids.size() << " tests";
    }
  }
}

TEST_F(SchedulerTest, DailyTestsStayWithinTenMinutesOfTheirTime) {
  clock_.now = QDateTime(QDate(2024, 6, 1), QTime(2, 59, 59), Qt::UTC).toMSecsSinceEpoch();
  scheduler_.emplace(clock_, QTimeZone::utc());
  Set(PlanOf(Ids(3'000), {true, QDate(2024, 1, 1), QTime(3, 0), 1, 3}));
  EXPECT_TRUE(TakeAll().empty());
  const std::vector<int> starts = Starts(601);
  EXPECT_EQ(Sum(starts), 3'000);
  EXPECT_LT(*std::max_element(starts.begin(), starts.end()), 10);
}

TEST_F(SchedulerTest, ATestDoesNotRunTwiceAtATime) {
  Set(PlanOf({1}, Every(1, DeltaType::Minutes)));
  clock_.Pass(*scheduler_->UntilNextMs());
  EXPECT_EQ(TakeAll(false), (std::vector<qint32>{1}));
  EXPECT_EQ(Sum(Starts(180)), 0);
  EXPECT_EQ(scheduler_->Skipped(), 3U);
  std::ignore = scheduler_->Finished(1);
  EXPECT_EQ(Sum(Starts(60)), 1);
}

TEST_F(SchedulerTest, ADemandGoesFirstAndRunsAgainWhatRunsAlready) {
  Set(PlanOf(Ids(3), Every(1, DeltaType::Minutes)));
  clock_.Pass(59'000);
  ASSERT_TRUE(scheduler_->Demand(2));
  ASSERT_TRUE(scheduler_->Demand(2));
  EXPECT_FALSE(scheduler_->Demand(4));
  EXPECT_EQ(scheduler_->UntilNextMs(), 0);
  const auto turn = scheduler_->Take();
  ASSERT_TRUE(turn);
  EXPECT_TRUE(turn->demanded && turn->idTest == 2);
  ASSERT_TRUE(scheduler_->Demand(2));
  std::vector<qint32> others = TakeAll();
  EXPECT_FALSE(std::count(others.begin(), others.end(), 2));
  std::ignore = scheduler_->Finished(2);
  const auto again = scheduler_->Take();
  ASSERT_TRUE(again);
  EXPECT_TRUE(again->demanded && again->idTest == 2);
}

TEST_F(SchedulerTest, WhatIsDueLongestStartsFirstAndItsLatenessIsCounted) {
  Set(PlanOf(Ids(100), Every(1, DeltaType::Minutes)));
  for (int i = 0; i < 59; ++i) {
    clock_.Pass(1000);
    std::ignore = scheduler_->UntilNextMs();  // somebody is there, but has no room
  }
  const std::vector<qint32> ids = TakeAll();
  EXPECT_GT(ids.size(), 90U);
  const auto schedule = Schedule::Make(Every(1, DeltaType::Minutes), QTimeZone::utc());
  const auto due = [&](qint32 id) { return schedule->Next(clock_.now - 59'000, PhaseOf(id)); };
  EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end(), [&](qint32 a, qint32 b) { return due(a) < due(b); }));
  EXPECT_GT(scheduler_->Late().MaxMs(), 55'000);
  EXPECT_LT(scheduler_->Late().ShareBelowMs(0.5), 50'000);
  EXPECT_GE(scheduler_->Late().ShareBelowMs(0.5), 25'000);
}

TEST_F(SchedulerTest, AChangedConfigurationKeepsDueTimesAndWhatRuns) {
  const ScheduleRecord minutes = Every(1, DeltaType::Minutes);
  Set(PlanOf({1, 2, 3}, minutes));
  ASSERT_TRUE(scheduler_->Demand(1));
  ASSERT_TRUE(scheduler_->Take());
  const qint64 until = *scheduler_->UntilNextMs();
  Set(PlanOf({1, 3, 4}, minutes));
  EXPECT_EQ(scheduler_->Running(), 1U);
  EXPECT_LE(*scheduler_->UntilNextMs(), until);
  const auto count = [](const std::vector<qint32>& ids, qint32 id) { return std::count(ids.begin(), ids.end(), id); };
  std::vector<qint32> seen;
  for (int i = 0; i < 60; ++i) {
    clock_.Pass(1000);
    const auto ids = TakeAll();
    seen.insert(seen.end(), ids.begin(), ids.end());
  }
  EXPECT_EQ(count(seen, 1), 0) << "it still runs";
  EXPECT_EQ(count(seen, 2), 0) << "it is no more";
  EXPECT_EQ(count(seen, 3), 1);
  EXPECT_EQ(count(seen, 4), 1);
  Set(PlanOf({3}, Every(1, DeltaType::Hours)));
  std::ignore = scheduler_->Finished(1);
  EXPECT_EQ(scheduler_->Running(), 0U);
  EXPECT_EQ(Sum(Starts(3600)), 1);
  Set(PlanOf({3}, {}));
  EXPECT_EQ(scheduler_->Scheduled(), 0U);
  EXPECT_FALSE(scheduler_->UntilNextMs());
}

TEST_F(SchedulerTest, AnOverdueTestKeepsItsTurnWhenTheConfigurationChanges) {
  const ScheduleRecord minutes = Every(1, DeltaType::Minutes);
  Set(PlanOf({1}, minutes));
  clock_.Pass(*scheduler_->UntilNextMs() + 500);
  Set(PlanOf({1, 2}, minutes));
  EXPECT_EQ(scheduler_->UntilNextMs(), 0);
}

TEST_F(SchedulerTest, AScheduleWithoutIntervalIsToldOnceUntilItIsPutRight) {
  const PlanIndex bad = PlanOf(Ids(10), {true, {}, {}, 0, 1});
  const QStringList told = scheduler_->SetPlan(bad);
  ASSERT_EQ(told.size(), 1);
  EXPECT_TRUE(told[0].contains(QStringLiteral("root group"))) << told[0].toStdString();
  EXPECT_TRUE(scheduler_->SetPlan(bad).isEmpty());
  EXPECT_EQ(scheduler_->Scheduled(), 0U);
  Set(PlanOf(Ids(10), Every(1, DeltaType::Days)));
  EXPECT_EQ(scheduler_->Scheduled(), 10U);
  EXPECT_EQ(scheduler_->SetPlan(bad).size(), 1);
}

TEST_F(SchedulerTest, AClockThatIsSetBringsNeitherABurstNorASilence) {
  constexpr qint64 kHour = 3'600'000;
  const struct {
    const char* what;
    qint64 set, slept;
  } cases[] = {{"an hour forward", kHour, 0},          {"an hour back", -kHour, 0},
               {"two years back", -17'520 * kHour, 0}, {"two seconds forward", 2'000, 0},
               {"two seconds back", -2'000, 0},        {"slept", 0, 8 * kHour}};
  for (const auto& [what, set, slept] : cases) {
    scheduler_.emplace(clock_, QTimeZone::utc());
    Set(PlanOf(Ids(600), Every(5, DeltaType::Minutes)));
    ASSERT_NEAR(Sum(Starts(100)), 200, 2) << what;
    clock_.now += set;
    clock_.Pass(slept);
    const std::vector<int> starts = Starts(302);
    EXPECT_LE(*std::max_element(starts.begin(), starts.end()), 7) << what;
    EXPECT_NEAR(Sum(starts), 602, 8) << what;
  }
}

}  // namespace
}  // namespace quarl::service
