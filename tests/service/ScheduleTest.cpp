// When the tests of a schedule are due, through changes of the clocks.
#include <gtest/gtest.h>

#include <QDateTime>

#include "service/Schedule.h"

namespace quarl::service {
namespace {

qint64 Utc(const char* text) {
  const QDateTime time = QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
  EXPECT_TRUE(time.isValid()) << text;
  return QDateTime(time.date(), time.time(), Qt::UTC).toMSecsSinceEpoch();
}

std::string Text(qint64 ms) {
  return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODate).chopped(1).toStdString();
}

struct Case {
  const char* zone;
  QDate date;
  QTime time;
  int delta, type;
  const char* from;
  const char* next;  // both in universal time
};

const Case kCases[] = {
    // A day in Rome, forward in the night of 2024-03-31 (02:00 to 03:00), back in that of 2024-10-27 (03:00 to 02:00).
    {"Europe/Rome", {2024, 3, 1}, {12, 0}, 1, 3, "2024-03-30T11:00:01", "2024-03-31T10:00:00"},
    {"Europe/Rome", {2024, 3, 1}, {12, 0}, 1, 3, "2024-10-26T10:00:01", "2024-10-27T11:00:00"},
    {"Europe/Rome", {2024, 3, 1}, {2, 30}, 1, 3, "2024-03-30T01:30:00", "2024-03-30T01:30:00"},
    {"Europe/Rome", {2024, 3, 1}, {2, 30}, 1, 3, "2024-03-30T01:30:01", "2024-03-31T01:30:00"},
    {"Europe/Rome", {2024, 3, 1}, {2, 30}, 1, 3, "2024-03-31T01:30:01", "2024-04-01T00:30:00"},
    {"Europe/Rome", {2024, 3, 1}, {2, 30}, 1, 3, "2024-10-26T00:30:01", "2024-10-27T00:30:00"},
    {"Europe/Rome", {2024, 3, 1}, {2, 30}, 1, 3, "2024-10-27T00:30:01", "2024-10-28T01:30:00"},
    {"Europe/Rome", {2024, 3, 30}, {2, 0}, 7, 3, "2024-03-30T01:00:01", "2024-04-06T00:00:00"},
    {"Europe/Rome", {2024, 3, 30}, {2, 0}, 32767, 3, "2024-03-30T01:00:01", "2113-12-16T01:00:00"},
    // Minutes and hours count time that passes.
    {"Europe/Rome", {2024, 3, 31}, {0, 30}, 60, 1, "2024-03-31T00:30:01", "2024-03-31T01:30:00"},
    {"Europe/Rome", {2024, 3, 30}, {23, 0}, 4, 2, "2024-03-30T22:00:01", "2024-03-31T02:00:00"},
    {"Europe/Rome", {2024, 10, 27}, {0, 30}, 60, 1, "2024-10-27T00:30:01", "2024-10-27T01:30:00"},
    {"Europe/Rome", {2024, 10, 26}, {23, 0}, 4, 2, "2024-10-26T21:00:01", "2024-10-27T01:00:00"},
    {"Europe/Rome", {2024, 3, 31}, {2, 30}, 90, 1, "2024-03-31T00:00:00", "2024-03-31T01:30:00"},
    {"Europe/Rome", {2024, 10, 27}, {2, 30}, 90, 1, "2024-10-27T00:00:00", "2024-10-27T00:30:00"},
    // Santiago changes at midnight: forward at the beginning of 2024-09-08, back at the end of 2024-04-06.
    {"America/Santiago", {2024, 1, 1}, {0, 0}, 1, 3, "2024-09-07T04:00:01", "2024-09-08T04:00:00"},
    {"America/Santiago", {2024, 1, 1}, {0, 0}, 1, 3, "2024-09-08T04:00:01", "2024-09-09T03:00:00"},
    {"America/Santiago", {2024, 1, 1}, {23, 30}, 1, 3, "2024-04-06T02:30:01", "2024-04-07T02:30:00"},
    {"America/Santiago", {2024, 1, 1}, {23, 30}, 1, 3, "2024-04-07T02:30:01", "2024-04-08T03:30:00"},
    {"America/Santiago", {2024, 4, 6}, {23, 0}, 30, 1, "2024-04-07T03:00:01", "2024-04-07T03:30:00"},
    // Half an hour on Lord Howe Island, forward in the night of 2024-10-06.
    {"Australia/Lord_Howe", {2024, 1, 1}, {2, 15}, 1, 3, "2024-10-05T12:00:00", "2024-10-05T15:45:00"},
    // Not before its start; without a date or a time.
    {"UTC", {2030, 1, 1}, {6, 0}, 5, 1, "2024-01-01T00:00:00", "2030-01-01T06:00:00"},
    {"UTC", {2030, 1, 1}, {6, 0}, 1, 3, "2024-01-01T00:00:00", "2030-01-01T06:00:00"},
    {"UTC", {2024, 1, 1}, {}, 1, 3, "2024-05-05T00:00:01", "2024-05-06T00:00:00"},
    {"UTC", {}, {0, 7}, 1, 2, "2024-05-05T00:00:00", "2024-05-05T00:07:00"},
};

TEST(ScheduleTest, TheNextTimeFollowsTheZone) {
  for (const Case& c : kCases) {
    const QTimeZone zone{QByteArray(c.zone)};
    ASSERT_TRUE(zone.isValid()) << c.zone;
    const auto schedule = Schedule::Make({true, c.date, c.time, qint16(c.delta), qint16(c.type)}, zone);
    ASSERT_TRUE(schedule);
    EXPECT_EQ(Text(schedule->Next(Utc(c.from), 0)), c.next) << c.zone << " from " << c.from;
  }
}

TEST(ScheduleTest, ATestComesOncePerIntervalAllTheYear) {
  const QTimeZone rome("Europe/Rome");
  const struct {
    int delta, type;
    int turns;  // in 2024
    qint64 shortest, longest;
  } cases[] = {{1, 3, 366, 23, 25}, {6, 2, 366 * 4, 6, 6}, {90, 1, 366 * 16, 1, 2}};
  for (const auto& [delta, type, turns, shortest, longest] : cases) {
    const auto schedule = Schedule::Make({true, QDate(2020, 1, 1), QTime(2, 30), qint16(delta), qint16(type)}, rome);
    ASSERT_TRUE(schedule);
    for (const qint32 id : {1, 2, 77}) {
      qint64 at = schedule->Next(Utc("2023-12-31T23:00:00"), PhaseOf(id));
      int seen = 0;
      while (at < Utc("2024-12-31T23:00:00")) {
        const qint64 next = schedule->Next(at + 1, PhaseOf(id));
        EXPECT_GE(next - at, shortest * 3'600'000) << Text(at);
        EXPECT_LE(next - at, longest * 3'600'000) << Text(at);
        at = next;
        ++seen;
      }
      EXPECT_EQ(seen, turns);
    }
  }
}

TEST(ScheduleTest, WithoutAnIntervalThereIsNoSchedule) {
  const struct {
    bool enabled;
    int delta, type;
    bool usable;
  } cases[] = {{true, 1, 1, true},   {true, 32767, 3, true}, {false, 1, 1, false}, {true, 0, 1, false},
               {true, -5, 2, false}, {true, 5, 0, false},    {true, 5, 4, false},  {true, 5, -1, false}};
  for (const auto& [enabled, delta, type, usable] : cases) {
    const ScheduleRecord record{enabled, QDate(2024, 1, 1), QTime(0, 0), qint16(delta), qint16(type)};
    EXPECT_EQ(Schedule::Make(record, QTimeZone::utc()).has_value(), usable) << delta << " of " << type;
  }
}

TEST(ScheduleTest, AServersOwnScheduleGoesBeforeItsGroupsAndThatBeforeTheDefault) {
  const ScheduleRecord off{};
  const ScheduleRecord on{.enabled = true, .startDate = {}, .startTime = {}};
  const struct {
    const ScheduleRecord *server, *group, *byDefault, *effective;
  } cases[] = {{nullptr, nullptr, nullptr, nullptr},
               {&off, &off, &off, nullptr},
               {&on, &on, &on, &on},
               {&off, nullptr, &on, &on},
               {nullptr, &on, &off, &on},
               {nullptr, &off, nullptr, nullptr}};
  for (const auto& c : cases) EXPECT_EQ(EffectiveSchedule(c.server, c.group, c.byDefault), c.effective);
  const ScheduleRecord another = on;
  EXPECT_EQ(EffectiveSchedule(&on, &another, &another), &on);
  EXPECT_EQ(EffectiveSchedule(&off, &another, &on), &another);
}

}  // namespace
}  // namespace quarl::service
