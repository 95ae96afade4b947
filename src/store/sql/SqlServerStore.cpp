#include "store/sql/SqlServerStore.h"

#include "store/sql/Rows.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {

std::optional<ServerRecord> SqlServerStore::GetServer(qint32 idServer) {
  return database_.Read([&](Connection& connection) -> std::optional<ServerRecord> {
    Query query(connection, "SELECT name, ip_address, id_group FROM servers WHERE id_server = $1", idServer);
    if (!query.Next()) return std::nullopt;
    return ServerRecord{query.Text(0), query.Text(1), query.Int32(2)};
  });
}

bool SqlServerStore::UpdateServer(qint32 idServer, const QString& name, const QString& ipAddress, qint32 idGroup) {
  return database_.Write([&](Connection& connection) {
    return Change(connection,
                  "UPDATE servers SET name = $1, ip_address = $2, id_group = $3 WHERE id_server = $4"
                  " AND EXISTS (SELECT 1 FROM groups WHERE id_group = $3)",
                  name, ipAddress, idGroup, idServer) > 0;
  });
}

qint32 SqlServerStore::AddServer(const QString& name, const QString& ipAddress, qint32 idGroup) {
  return database_.Write([&](Connection& connection) {
    const qint32 id = NextId(connection, "nodes");
    const bool added = id > 0 && Change(connection,
                                        "INSERT INTO servers (id_server, id_group, name, ip_address)"
                                        " SELECT $1, id_group, $2, $3 FROM groups WHERE id_group = $4",
                                        id, name, ipAddress, idGroup) > 0;
    return added ? id : 0;
  });
}

bool SqlServerStore::RemoveServer(qint32 idServer) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "DELETE FROM servers WHERE id_server = $1", idServer) > 0;
  });
}

bool SqlServerStore::CheckServer(qint32 idServer) {
  return requests_.RunServer(idServer);
}

RecordSet SqlServerStore::GetServersByGroup(qint32 idGroup) {
  static const Fields fields = MakeFields({{"IDServer", FieldType::Integer},
                                           {"ServerName", FieldType::Text},
                                           {"ServerIP", FieldType::Text},
                                           {"IDTestState", FieldType::Integer}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields,
                 "SELECT s.id_server, s.name, s.ip_address, st.id_test_state FROM servers s"
                 " LEFT JOIN server_states st ON st.id_server = s.id_server"
                 " WHERE s.id_group = $1 ORDER BY s.name, s.id_server DESC",
                 idGroup);
  });
}

RecordSet SqlServerStore::GetAllServers(qint32 /*idGroup*/) {
  static const Fields fields = MakeFields({{"IDServer", FieldType::Integer},
                                           {"ServerName", FieldType::Text},
                                           {"ServerIP", FieldType::Text},
                                           {"IDTestState", FieldType::Integer},
                                           {"GroupName", FieldType::Text}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields,
                 "SELECT s.id_server, s.name, s.ip_address, st.id_test_state, g.name FROM servers s"
                 " LEFT JOIN server_states st ON st.id_server = s.id_server"
                 " LEFT JOIN groups g ON g.id_group = s.id_group AND g.id_group > 0"
                 " ORDER BY s.name, s.id_server DESC");
  });
}

std::optional<ScheduleRecord> SqlServerStore::GetServerSchedule(qint32 idServer) {
  return database_.Read(
      [&](Connection& connection) { return ReadSchedule(connection, ScheduleOwner::Server, idServer); });
}

bool SqlServerStore::SetServerSchedule(qint32 idServer, const ScheduleRecord& schedule) {
  return database_.Write([&](Connection& connection) {
    return IsStorable(schedule) && PutSchedule(connection, ScheduleOwner::Server, idServer, schedule);
  });
}

bool SqlServerStore::SetFailThreshold(qint32 idServer, qint16 count) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE servers SET fail_threshold = $1 WHERE id_server = $2", count, idServer) > 0;
  });
}

qint16 SqlServerStore::GetFailThreshold(qint32 idServer) {
  return database_.Read([&](Connection& connection) {
    Query query(connection, "SELECT fail_threshold FROM servers WHERE id_server = $1", idServer);
    return query.Next() && !query.IsNull(0) ? query.Int16(0) : kDefaultFailThreshold;
  });
}

}  // namespace quarl::store::sql
