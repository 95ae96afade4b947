#include "store/sql/PlanReader.h"

#include <algorithm>
#include <unordered_map>

#include "store/ServerStore.h"
#include "store/sql/Rows.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {
namespace {

constexpr int kLowestThreshold = 1;
constexpr int kHighestThreshold = 10;

TestState StateOf(Query& query, int column) {
  const qint64 state = query.Integer(column);
  if (state < 1 || state > 3) ThrowDamaged(QStringLiteral("%1 is no state of a test").arg(state));
  return static_cast<TestState>(state);
}

QString TextOrEmpty(Query& query, int column) {
  return query.IsNull(column) ? QString() : query.Text(column);
}

void ReadGroups(Connection& connection, Plan& plan) {
  Query query(connection,
              "SELECT g.id_group, g.name, s.enabled, s.start_date, s.start_time, s.delta_time, s.delta_type"
              " FROM groups g LEFT JOIN group_schedules s ON s.id_group = g.id_group ORDER BY g.id_group");
  while (query.Next()) plan.groups.push_back({query.Int32(0), query.Text(1), ScheduleIn(query, 2)});
}

void ReadServers(Connection& connection, Plan& plan) {
  Query query(connection,
              "SELECT v.id_server, v.id_group, v.name, v.ip_address, v.fail_threshold,"
              " s.enabled, s.start_date, s.start_time, s.delta_time, s.delta_type"
              " FROM servers v LEFT JOIN server_schedules s ON s.id_server = v.id_server ORDER BY v.id_server");
  while (query.Next()) {
    const int stored = query.IsNull(4) ? kDefaultFailThreshold : query.Int16(4);
    plan.servers.push_back({query.Int32(0), query.Int32(1), query.Text(2), query.Text(3),
                            std::clamp(stored, kLowestThreshold, kHighestThreshold), ScheduleIn(query, 5)});
  }
}

void ReadTests(Connection& connection, Plan& plan) {
  std::unordered_map<qint32, QString> modules;
  {
    Query query(connection, "SELECT id_test_type, module FROM test_types");
    while (query.Next()) modules.emplace(query.Int32(0), query.Text(1));
  }
  Query query(connection, "SELECT id_test, id_server, id_test_type, name, properties FROM tests ORDER BY id_test");
  while (query.Next()) {
    plan.tests.push_back({query.Int32(0), query.Int32(1), query.Text(3), modules[query.Int32(2)], query.Text(4)});
  }
}

void ReadAlerts(Connection& connection, Plan& plan) {
  Query query(connection, "SELECT id_alert, id_server, id_group, name FROM alerts ORDER BY id_alert");
  while (query.Next()) {
    plan.alerts.push_back(
        {query.Int32(0), query.IsNull(1) ? 0 : query.Int32(1), query.IsNull(2) ? 0 : query.Int32(2), query.Text(3)});
  }
}

}  // namespace

Plan ReadPlan(Connection& connection) {
  Plan plan;
  Query query(connection, "SELECT store_id, revision FROM store_properties");
  if (!query.Next()) ThrowDamaged(QStringLiteral("its properties are missing"));
  plan.storeId = query.Text(0);
  plan.revision = query.Integer(1);
  ReadGroups(connection, plan);
  ReadServers(connection, plan);
  ReadTests(connection, plan);
  ReadAlerts(connection, plan);
  return plan;
}

StoredStates ReadStates(Connection& connection) {
  StoredStates states;
  Query tests(connection,
              "SELECT id_test, id_test_state, last_execution_ms, last_result, performance, consecutive_failures,"
              " failed, since_ms FROM test_results ORDER BY id_test");
  while (tests.Next()) {
    TestResult& result = states.tests.emplace_back();
    result.idTest = tests.Int32(0);
    result.state = StateOf(tests, 1);
    if (!tests.IsNull(2)) result.lastExecutionMs = TimeOf(tests, 2);
    result.text = TextOrEmpty(tests, 3);
    result.performance = tests.Text(4);
    result.consecutiveFailures = tests.Int32(5);
    result.failed = tests.Integer(6) != 0;
    result.sinceMs = TimeOf(tests, 7);
  }
  Query servers(connection, "SELECT id_server, id_test_state, failed, since_ms FROM server_states ORDER BY id_server");
  while (servers.Next()) {
    states.servers.push_back({servers.Int32(0), StateOf(servers, 1), servers.Integer(2) != 0, TimeOf(servers, 3)});
  }
  return states;
}

}  // namespace quarl::store::sql
