#pragma once

#include <QTimeZone>
#include <optional>

#include "base/ScheduleRecord.h"

namespace quarl::service {

/// A place inside an interval, as a share of 2^32.
using Phase = quint32;

/// The phase of a test: the same after every restart, and evenly spread over whatever ids there are.
Phase PhaseOf(qint32 idTest);

/// A schedule record with a usable interval, as a series of times.
///
/// Minutes and hours are counted as time that passes, from the start on, whatever clocks are changed to; a test's own
/// times lie up to an interval later by its phase. Days keep the time of day; there the phase moves a test by ten
/// minutes at most, because a time of day is chosen on purpose. A start whose local time does not exist (clocks are put
/// forward over it) is as long after midnight as if they were not: 02:30 is the moment shown as 03:30. One that exists
/// twice is the first of the two.
class Schedule {
 public:
  /// True when the interval is one: at least 1, of a known unit.
  static bool HasInterval(const ScheduleRecord& record);
  /// Nothing: not enabled, or without an interval. Without a start date the series began long ago, without a start time
  /// at midnight.
  static std::optional<Schedule> Make(const ScheduleRecord& record, const QTimeZone& zone);

  /// The first time of the series, shifted by the phase, that is not before a given one. Milliseconds since the epoch.
  qint64 Next(qint64 fromMs, Phase phase) const;
  bool operator==(const Schedule&) const = default;

 private:
  Schedule(const ScheduleRecord& record, const QTimeZone& zone);
  qint64 NextDay(qint64 fromMs) const;

  QTimeZone zone_;
  QDate startDate_;
  QTime startTime_;
  qint64 days_ = 0;  // 0: an interval of elapsed time
  qint64 startMs_ = 0;
  qint64 intervalMs_ = 0;
  qint64 spreadMs_ = 0;
};

/// The schedule in force for a server: its own if that is enabled, else its group's, else the default one; null: none
/// of them is. Any of the three may be null.
const ScheduleRecord* EffectiveSchedule(const ScheduleRecord* server, const ScheduleRecord* group,
                                        const ScheduleRecord* byDefault);

/// When a clock on the wall of the zone shows this, by the rules above; milliseconds since the epoch.
qint64 MomentOf(QDate date, QTime time, const QTimeZone& zone);

}  // namespace quarl::service
