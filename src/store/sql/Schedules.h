#pragma once

#include "base/ScheduleRecord.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// Whose schedule it is. That of the root group is the default schedule.
enum class ScheduleOwner { Group, Server };

/// Nothing when the owner has no schedule or does not exist.
std::optional<ScheduleRecord> ReadSchedule(Connection& connection, ScheduleOwner owner, qint32 id);
/// False: no such owner. The schedule must be storable.
bool PutSchedule(Connection& connection, ScheduleOwner owner, qint32 id, const ScheduleRecord& schedule);
/// False: there was none.
bool RemoveSchedule(Connection& connection, ScheduleOwner owner, qint32 id);

/// Five columns from the given one on: enabled, start date, start time, delta time, delta type. Nothing when the first
/// one is Null.
std::optional<ScheduleRecord> ScheduleIn(Query& query, int column);
/// False for a start date outside the years 1 to 9999, which cannot be stored.
bool IsStorable(const ScheduleRecord& schedule);

}  // namespace quarl::store::sql
