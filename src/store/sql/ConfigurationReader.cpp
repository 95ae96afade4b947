#include "store/sql/ConfigurationReader.h"

#include <unordered_map>

#include "store/sql/Rows.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {
namespace {

std::vector<TypeConfiguration> ReadTypes(Connection& connection, const char* sql) {
  std::vector<TypeConfiguration> types;
  Query query(connection, sql);
  while (query.Next()) types.push_back({query.Int32(0), query.Text(1), query.Text(2)});
  return types;
}

/// Fills a configuration from the top down; the addresses of groups and servers stay as they are below their level.
class Reader {
 public:
  Reader(Connection& connection, Configuration& configuration)
      : connection_(connection), configuration_(configuration) {}

  void ReadGroups() {
    Query query(connection_,
                "SELECT g.id_group, g.name, g.description, s.enabled, s.start_date, s.start_time, s.delta_time,"
                " s.delta_type FROM groups g LEFT JOIN group_schedules s ON s.id_group = g.id_group"
                " ORDER BY g.name, g.id_group DESC");
    while (query.Next()) {
      GroupConfiguration group{query.Int32(0), query.Text(1), query.Text(2), ScheduleIn(query, 3), {}, {}};
      if (group.id == 0) {
        configuration_.root = std::move(group);
      } else {
        configuration_.groups.push_back(std::move(group));
      }
    }
    groups_[0] = &configuration_.root;
    for (GroupConfiguration& group : configuration_.groups) groups_[group.id] = &group;
  }

  void ReadServers() {
    Query query(connection_,
                "SELECT v.id_group, v.id_server, v.name, v.ip_address, v.fail_threshold, s.enabled, s.start_date,"
                " s.start_time, s.delta_time, s.delta_type FROM servers v"
                " LEFT JOIN server_schedules s ON s.id_server = v.id_server"
                " ORDER BY v.id_group, v.name, v.id_server DESC");
    while (query.Next()) {
      ServerConfiguration server;
      server.id = query.Int32(1);
      server.name = query.Text(2);
      server.ipAddress = query.Text(3);
      if (!query.IsNull(4)) server.failThreshold = query.Int16(4);
      server.schedule = ScheduleIn(query, 5);
      OwnerIn(groups_, query.Int32(0)).servers.push_back(std::move(server));
    }
    for (const auto& [id, group] : groups_) {
      for (ServerConfiguration& server : group->servers) servers_[server.id] = &server;
    }
  }

  void ReadTests() {
    Query query(connection_,
                "SELECT id_server, id_test, id_test_type, name, properties FROM tests ORDER BY id_server, id_test");
    while (query.Next()) {
      OwnerIn(servers_, query.Int32(0)).tests.push_back({query.Int32(1), query.Int32(2), query.Text(3), query.Text(4)});
    }
  }

  void ReadAlerts() {
    Query query(connection_,
                "SELECT id_group, id_server, id_alert, id_alert_type, name, properties FROM alerts"
                " ORDER BY position, id_alert");
    while (query.Next()) {
      AlertConfiguration alert{query.Int32(2), query.Int32(3), query.Text(4), query.Text(5)};
      auto& alerts =
          query.IsNull(1) ? OwnerIn(groups_, query.Int32(0)).alerts : OwnerIn(servers_, query.Int32(1)).alerts;
      alerts.push_back(std::move(alert));
    }
  }

 private:
  template <typename Record>
  static Record& OwnerIn(const std::unordered_map<qint32, Record*>& records, qint32 id) {
    const auto found = records.find(id);
    if (found == records.end()) ThrowDamaged(QStringLiteral("the owner %1 of a record is missing").arg(id));
    return *found->second;
  }

  Connection& connection_;
  Configuration& configuration_;
  std::unordered_map<qint32, GroupConfiguration*> groups_;
  std::unordered_map<qint32, ServerConfiguration*> servers_;
};

}  // namespace

Configuration ReadConfiguration(Connection& connection) {
  Configuration configuration;
  configuration.testTypes =
      ReadTypes(connection, "SELECT id_test_type, name, module FROM test_types ORDER BY id_test_type");
  configuration.alertTypes =
      ReadTypes(connection, "SELECT id_alert_type, name, module FROM alert_types ORDER BY id_alert_type");
  Reader reader(connection, configuration);
  reader.ReadGroups();
  reader.ReadServers();
  reader.ReadTests();
  reader.ReadAlerts();
  return configuration;
}

}  // namespace quarl::store::sql
