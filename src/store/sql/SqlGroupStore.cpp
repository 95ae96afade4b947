#include "store/sql/SqlGroupStore.h"

#include "store/sql/Rows.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {
namespace {

constexpr qint32 kRootGroup = 0;

}  // namespace

qint32 SqlGroupStore::AddGroup(const QString& name, const QString& description) {
  return database_.Write([&](Connection& connection) {
    const qint32 id = NextId(connection, "nodes");
    if (id > 0) {
      Change(connection, "INSERT INTO groups (id_group, name, description) VALUES ($1, $2, $3)", id, name, description);
    }
    return id;
  });
}

bool SqlGroupStore::RemoveGroup(qint32 idGroup) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "DELETE FROM groups WHERE id_group = $1 AND id_group > 0", idGroup) > 0;
  });
}

bool SqlGroupStore::CheckGroup(qint32 idGroup) {
  return requests_.RunGroup(idGroup);
}

RecordSet SqlGroupStore::GetGroups(qint32 /*idGroup*/) {
  static const Fields fields = MakeFields({{"IDGroup", FieldType::Integer}, {"GroupName", FieldType::Text}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields,
                 "SELECT id_group, name FROM groups WHERE id_group > 0 ORDER BY name, id_group DESC");
  });
}

std::optional<GroupRecord> SqlGroupStore::GetGroup(qint32 idGroup) {
  return database_.Read([&](Connection& connection) -> std::optional<GroupRecord> {
    Query query(connection, "SELECT name, description FROM groups WHERE id_group = $1 AND id_group > 0", idGroup);
    if (!query.Next()) return std::nullopt;
    return GroupRecord{query.Text(0), query.Text(1)};
  });
}

bool SqlGroupStore::UpdateGroup(qint32 idGroup, const QString& name, const QString& description) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE groups SET name = $1, description = $2 WHERE id_group = $3 AND id_group > 0",
                  name, description, idGroup) > 0;
  });
}

std::optional<ScheduleRecord> SqlGroupStore::ReadSchedule(qint32 idGroup) {
  return database_.Read(
      [&](Connection& connection) { return sql::ReadSchedule(connection, ScheduleOwner::Group, idGroup); });
}

bool SqlGroupStore::WriteSchedule(qint32 idGroup, const ScheduleRecord& schedule) {
  return database_.Write([&](Connection& connection) {
    return IsStorable(schedule) && PutSchedule(connection, ScheduleOwner::Group, idGroup, schedule);
  });
}

std::optional<ScheduleRecord> SqlGroupStore::GetGroupSchedule(qint32 idGroup) {
  if (idGroup == kRootGroup) return std::nullopt;
  return ReadSchedule(idGroup);
}

bool SqlGroupStore::SetGroupSchedule(qint32 idGroup, const ScheduleRecord& schedule) {
  return idGroup != kRootGroup && WriteSchedule(idGroup, schedule);
}

std::optional<ScheduleRecord> SqlGroupStore::GetDefaultSchedule() {
  return ReadSchedule(kRootGroup);
}

bool SqlGroupStore::SetDefaultSchedule(const ScheduleRecord& schedule) {
  return WriteSchedule(kRootGroup, schedule);
}

}  // namespace quarl::store::sql
