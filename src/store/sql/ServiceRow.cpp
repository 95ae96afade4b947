#include "store/sql/ServiceRow.h"

#include <tuple>

#include "store/sql/Rows.h"

namespace quarl::store::sql {

std::optional<ServiceInstance> ReadInstance(Connection& connection) {
  Query query(connection,
              "SELECT instance_id, host, machine, boot, scope, pid, start_ticks, started_ms, beat_ms, state"
              " FROM service_instance");
  if (!query.Next()) return std::nullopt;
  return ServiceInstance{.id = query.Text(0),
                         .process = {.host = query.Text(1),
                                     .machine = query.Text(2),
                                     .boot = query.Text(3),
                                     .scope = query.Text(4),
                                     .pid = query.Integer(5),
                                     .startTicks = query.Integer(6)},
                         .startedMs = TimeOf(query, 7),
                         .beatMs = TimeOf(query, 8),
                         .state = query.Int16(9)};
}

void WriteInstance(Connection& connection, const ServiceInstance& instance) {
  const ProcessIdentity& process = instance.process;
  Change(connection,
         "INSERT INTO service_instance (id, instance_id, host, machine, boot, scope, pid, start_ticks, started_ms,"
         " beat_ms, state) VALUES (1, $1, $2, $3, $4, $5, $6, $7, $8, $9, $10) ON CONFLICT (id) DO UPDATE SET"
         " instance_id = excluded.instance_id, host = excluded.host, machine = excluded.machine, boot = excluded.boot,"
         " scope = excluded.scope, pid = excluded.pid, start_ticks = excluded.start_ticks,"
         " started_ms = excluded.started_ms, beat_ms = excluded.beat_ms, state = excluded.state",
         instance.id, process.host, process.machine, process.boot, process.scope, process.pid, process.startTicks,
         instance.startedMs, instance.beatMs, instance.state);
}

bool BeatInstance(Connection& connection, const QString& instance, qint64 nowMs, qint16 state) {
  return Change(connection, "UPDATE service_instance SET beat_ms = $1, state = $2 WHERE instance_id = $3", nowMs, state,
                instance) > 0;
}

void RemoveInstance(Connection& connection, const QString& instance) {
  Change(connection, "DELETE FROM service_instance WHERE instance_id = $1", instance);
}

bool IsOwner(Connection& connection, const QString& instance) {
  return Exists(connection, "SELECT 1 FROM service_instance WHERE instance_id = $1", instance);
}

void ForgetService(Connection& connection) {
  Change(connection, "DELETE FROM service_instance");
  Change(connection, "DELETE FROM check_requests");
  Change(connection, "DELETE FROM outbox");
}

}  // namespace quarl::store::sql
