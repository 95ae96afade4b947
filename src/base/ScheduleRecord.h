#pragma once

#include <QDate>
#include <QTime>

namespace quarl {

/// Units of a schedule's interval, as stored.
enum class DeltaType : qint16 { Minutes = 1, Hours = 2, Days = 3 };

/// When the tests of a group or server run. The console stores it as the user gave it, the service interprets it:
/// a deltaTime below 1 or a deltaType outside 1 to 3 (0 = no unit chosen) is a value like any other here.
struct ScheduleRecord {
  bool enabled = false;
  QDate startDate;  ///< calendar day in the service's time zone
  QTime startTime;  ///< time of day, to the millisecond
  qint16 deltaTime = 0;
  qint16 deltaType = 0;  ///< a DeltaType, or 0

  bool operator==(const ScheduleRecord&) const = default;
};

}  // namespace quarl
