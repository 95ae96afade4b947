#include "store/sql/Schedules.h"

#include "store/sql/SqlText.h"

namespace quarl::store::sql {
namespace {

struct ScheduleSql {
  std::string read, put, remove;

  /// @param word what the owner's tables and columns are named after.
  explicit ScheduleSql(std::string_view word)
      : read(Filled("SELECT enabled, start_date, start_time, delta_time, delta_type FROM %owner%_schedules"
                    " WHERE id_%owner% = $1",
                    {{"%owner%", word}})),
        put(Filled("INSERT INTO %owner%_schedules (id_%owner%, enabled, start_date, start_time, delta_time, delta_type)"
                   " SELECT $1, $2, $3, $4, $5, $6 FROM %owner%s WHERE id_%owner% = $1"
                   " ON CONFLICT (id_%owner%) DO UPDATE SET enabled = excluded.enabled,"
                   " start_date = excluded.start_date, start_time = excluded.start_time,"
                   " delta_time = excluded.delta_time, delta_type = excluded.delta_type",
                   {{"%owner%", word}})),
        remove(Filled("DELETE FROM %owner%_schedules WHERE id_%owner% = $1", {{"%owner%", word}})) {}
};

const ScheduleSql& SqlOf(ScheduleOwner owner) {
  static const ScheduleSql group("group"), server("server");
  return owner == ScheduleOwner::Group ? group : server;
}

/// Dates and times as they are stored; an unset one is Null.
std::optional<QString> DateColumn(const ScheduleRecord& schedule) {
  if (!schedule.startDate.isValid()) return std::nullopt;
  return schedule.startDate.toString(Qt::ISODate);
}

std::optional<QString> TimeColumn(const ScheduleRecord& schedule) {
  if (!schedule.startTime.isValid()) return std::nullopt;
  return schedule.startTime.toString(schedule.startTime.msec() == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

ScheduleRecord ScheduleOf(Query& query, int column) {
  ScheduleRecord schedule;
  schedule.enabled = query.Integer(column) != 0;
  if (!query.IsNull(column + 1)) {
    const QString text = query.Text(column + 1);
    schedule.startDate = QDate::fromString(text, Qt::ISODate);
    if (!schedule.startDate.isValid()) ThrowDamaged(QStringLiteral("\"%1\" is no date").arg(text.left(40)));
  }
  if (!query.IsNull(column + 2)) {
    const QString text = query.Text(column + 2);
    schedule.startTime = QTime::fromString(text, Qt::ISODateWithMs);
    if (!schedule.startTime.isValid()) ThrowDamaged(QStringLiteral("\"%1\" is no time of day").arg(text.left(40)));
  }
  schedule.deltaTime = query.Int16(column + 3);
  schedule.deltaType = query.Int16(column + 4);
  return schedule;
}

}  // namespace

std::optional<ScheduleRecord> ReadSchedule(Connection& connection, ScheduleOwner owner, qint32 id) {
  Query query(connection, SqlOf(owner).read, id);
  if (!query.Next()) return std::nullopt;
  return ScheduleOf(query, 0);
}

bool PutSchedule(Connection& connection, ScheduleOwner owner, qint32 id, const ScheduleRecord& schedule) {
  return Change(connection, SqlOf(owner).put, id, schedule.enabled, DateColumn(schedule), TimeColumn(schedule),
                schedule.deltaTime, schedule.deltaType) > 0;
}

bool RemoveSchedule(Connection& connection, ScheduleOwner owner, qint32 id) {
  return Change(connection, SqlOf(owner).remove, id) > 0;
}

std::optional<ScheduleRecord> ScheduleIn(Query& query, int column) {
  if (query.IsNull(column)) return std::nullopt;
  return ScheduleOf(query, column);
}

bool IsStorable(const ScheduleRecord& schedule) {
  return !schedule.startDate.isValid() || (schedule.startDate.year() >= 1 && schedule.startDate.year() <= 9999);
}

}  // namespace quarl::store::sql
