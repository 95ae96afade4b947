#include "store/sql/ConfigurationWriter.h"

#include <algorithm>
#include <limits>

#include "store/sql/ConfigurationReader.h"
#include "store/sql/Rows.h"

namespace quarl::store::sql {

struct ConfigurationWriter::TypeSql {
  const char* sequence;
  const char* insert;
  const char* update;
};

namespace {

GroupConfiguration WithoutContent(const GroupConfiguration& group) {
  return {group.id, group.name, group.description, group.schedule, {}, {}};
}

ServerConfiguration WithoutContent(const ServerConfiguration& server) {
  return {server.id, server.name, server.ipAddress, server.failThreshold, server.schedule, {}, {}};
}

/// The record of this id, marked as one to keep; null when the store has none.
template <typename Stored>
auto* Keep(Stored& stored, qint32 id) {
  const auto found = stored.find(id);
  if (found == stored.end()) return static_cast<typename Stored::mapped_type*>(nullptr);
  found->second.kept = true;
  return &found->second;
}

/// The highest ids in a configuration, one a sequence.
struct HighestIds {
  qint32 testType = 0, alertType = 0, node = 0, test = 0, alert = 0;

  explicit HighestIds(const Configuration& configuration) {
    for (const TypeConfiguration& type : configuration.testTypes) testType = std::max(testType, type.id);
    for (const TypeConfiguration& type : configuration.alertTypes) alertType = std::max(alertType, type.id);
    Look(configuration.root);
    for (const GroupConfiguration& group : configuration.groups) Look(group);
  }

 private:
  void Look(const GroupConfiguration& group) {
    node = std::max(node, group.id);
    for (const AlertConfiguration& a : group.alerts) alert = std::max(alert, a.id);
    for (const ServerConfiguration& server : group.servers) {
      node = std::max(node, server.id);
      for (const TestConfiguration& t : server.tests) test = std::max(test, t.id);
      for (const AlertConfiguration& a : server.alerts) alert = std::max(alert, a.id);
    }
  }
};

}  // namespace

template <typename... Arguments>
void ConfigurationWriter::Do(const char* sql, const Arguments&... arguments) {
  if (Change(connection_, sql, arguments...) > 0) changed_ = true;
}

ConfigurationWriter::ConfigurationWriter(Connection& connection) : connection_(connection) {
  Remember(ReadConfiguration(connection));
}

void ConfigurationWriter::Remember(const Configuration& stored) {
  for (const TypeConfiguration& type : stored.testTypes) testTypes_[type.id] = {type, {}};
  for (const TypeConfiguration& type : stored.alertTypes) alertTypes_[type.id] = {type, {}};
  RememberGroup(stored.root);
  for (const GroupConfiguration& group : stored.groups) RememberGroup(group);
  RememberPositions();
}

void ConfigurationWriter::RememberGroup(const GroupConfiguration& group) {
  groups_[group.id] = {WithoutContent(group), {}};
  for (const AlertConfiguration& alert : group.alerts) alerts_[alert.id] = {alert, {group.id, std::nullopt}};
  for (const ServerConfiguration& server : group.servers) {
    const Owner owner{std::nullopt, server.id};
    servers_[server.id] = {WithoutContent(server), {group.id, std::nullopt}};
    for (const TestConfiguration& test : server.tests) tests_[test.id] = {test, owner};
    for (const AlertConfiguration& alert : server.alerts) alerts_[alert.id] = {alert, owner};
  }
}

void ConfigurationWriter::RememberPositions() {
  Query query(connection_, "SELECT id_alert, position FROM alerts");
  while (query.Next()) alerts_[query.Int32(0)].position = query.Integer(1);
}

bool ConfigurationWriter::Write(const Configuration& configuration) {
  RaiseSequences(configuration);
  WriteTypes(configuration.testTypes, testTypes_,
             {"test_types", "INSERT INTO test_types (id_test_type, name, module) VALUES ($1, $2, $3)",
              "UPDATE test_types SET name = $1, module = $2 WHERE id_test_type = $3"});
  WriteTypes(configuration.alertTypes, alertTypes_,
             {"alert_types", "INSERT INTO alert_types (id_alert_type, name, module) VALUES ($1, $2, $3)",
              "UPDATE alert_types SET name = $1, module = $2 WHERE id_alert_type = $3"});
  WriteGroup(configuration.root, Keep(groups_, 0));
  for (const GroupConfiguration& group : configuration.groups) {
    WriteGroup(group, group.id > 0 ? Keep(groups_, group.id) : nullptr);
  }
  // From the bottom up, now that all that stays has its new owner and type.
  RemoveOthers(alerts_, "DELETE FROM alerts WHERE id_alert = $1");
  RemoveOthers(tests_, "DELETE FROM tests WHERE id_test = $1");
  RemoveOthers(servers_, "DELETE FROM servers WHERE id_server = $1");
  RemoveOthers(groups_, "DELETE FROM groups WHERE id_group = $1");
  RemoveOthers(testTypes_, "DELETE FROM test_types WHERE id_test_type = $1");
  RemoveOthers(alertTypes_, "DELETE FROM alert_types WHERE id_alert_type = $1");
  return changed_;
}

void ConfigurationWriter::RaiseSequences(const Configuration& configuration) {
  const HighestIds highest(configuration);
  const std::pair<const char*, qint32> sequences[] = {{"test_types", highest.testType},
                                                      {"alert_types", highest.alertType},
                                                      {"nodes", highest.node},
                                                      {"tests", highest.test},
                                                      {"alerts", highest.alert}};
  for (const auto& [name, id] : sequences) {
    Change(connection_, "UPDATE sequences SET last_id = $1 WHERE name = $2 AND last_id < $1", id, name);
  }
}

qint32 ConfigurationWriter::IdFor(qint32 wanted, const char* sequence) {
  if (wanted > 0) return wanted;
  const qint32 id = NextId(connection_, sequence);
  if (id < 1) throw StoreError(QStringLiteral("The store has no id left for a new record."));
  return id;
}

void ConfigurationWriter::WriteTypes(const std::vector<TypeConfiguration>& types, Stored<TypeConfiguration>& stored,
                                     const TypeSql& sql) {
  for (const TypeConfiguration& type : types) {
    const auto* before = Keep(stored, type.id);
    if (!before) {
      Do(sql.insert, IdFor(type.id, sql.sequence), type.name, type.module);
    } else if (before->record != type) {
      Do(sql.update, type.name, type.module, type.id);
    }
  }
}

void ConfigurationWriter::WriteGroup(const GroupConfiguration& group, const Placed<GroupConfiguration>* before) {
  const qint32 id = before ? group.id : IdFor(group.id, "nodes");
  if (!before) {
    Do("INSERT INTO groups (id_group, name, description) VALUES ($1, $2, $3)", id, group.name, group.description);
  } else if (before->record.name != group.name || before->record.description != group.description) {
    Do("UPDATE groups SET name = $1, description = $2 WHERE id_group = $3", group.name, group.description, id);
  }
  WriteSchedule(ScheduleOwner::Group, id, before ? before->record.schedule : std::nullopt, group.schedule);
  WriteContent(group, id);
}

void ConfigurationWriter::WriteContent(const GroupConfiguration& group, qint32 idGroup) {
  for (const ServerConfiguration& server : group.servers) WriteServer(server, idGroup);
  WriteAlerts(group.alerts, {idGroup, std::nullopt});
}

void ConfigurationWriter::WriteServer(const ServerConfiguration& server, qint32 idGroup) {
  const auto* before = server.id > 0 ? Keep(servers_, server.id) : nullptr;
  const qint32 id = before ? server.id : IdFor(server.id, "nodes");
  const Owner owner{idGroup, std::nullopt};
  if (!before) {
    Do("INSERT INTO servers (id_server, id_group, name, ip_address, fail_threshold) VALUES ($1, $2, $3, $4, $5)", id,
       idGroup, server.name, server.ipAddress, server.failThreshold);
  } else if (before->owner != owner || before->record.name != server.name ||
             before->record.ipAddress != server.ipAddress || before->record.failThreshold != server.failThreshold) {
    Do("UPDATE servers SET id_group = $1, name = $2, ip_address = $3, fail_threshold = $4 WHERE id_server = $5",
       idGroup, server.name, server.ipAddress, server.failThreshold, id);
  }
  WriteSchedule(ScheduleOwner::Server, id, before ? before->record.schedule : std::nullopt, server.schedule);
  for (const TestConfiguration& test : server.tests) WriteTest(test, id);
  WriteAlerts(server.alerts, {std::nullopt, id});
}

void ConfigurationWriter::WriteSchedule(ScheduleOwner owner, qint32 id, const std::optional<ScheduleRecord>& before,
                                        const std::optional<ScheduleRecord>& schedule) {
  if (before == schedule) return;
  const bool changed =
      schedule ? PutSchedule(connection_, owner, id, *schedule) : RemoveSchedule(connection_, owner, id);
  changed_ = changed_ || changed;
}

void ConfigurationWriter::WriteTest(const TestConfiguration& test, qint32 idServer) {
  const auto* before = test.id > 0 ? Keep(tests_, test.id) : nullptr;
  if (!before) {
    Do("INSERT INTO tests (id_test, id_server, id_test_type, name, properties) VALUES ($1, $2, $3, $4, $5)",
       IdFor(test.id, "tests"), idServer, test.idTestType, test.name, test.properties);
  } else if (before->record != test || before->owner.server != idServer) {
    Do("UPDATE tests SET id_server = $1, id_test_type = $2, name = $3, properties = $4 WHERE id_test = $5", idServer,
       test.idTestType, test.name, test.properties, test.id);
  }
}

void ConfigurationWriter::WriteAlerts(const std::vector<AlertConfiguration>& alerts, const Owner& owner) {
  qint64 last = 0;
  for (const AlertConfiguration& alert : alerts) {
    const auto* before = alert.id > 0 ? Keep(alerts_, alert.id) : nullptr;
    const bool inPlace = before && before->owner == owner && before->position > last;
    if (!inPlace && last == std::numeric_limits<qint64>::max()) {
      throw StoreError(QStringLiteral("The store has no place left behind the last alert of a group or server."));
    }
    last = inPlace ? before->position : last + 1;
    if (!before) {
      Do("INSERT INTO alerts (id_alert, id_group, id_server, position, id_alert_type, name, properties)"
         " VALUES ($1, $2, $3, $4, $5, $6, $7)",
         IdFor(alert.id, "alerts"), owner.group, owner.server, last, alert.idAlertType, alert.name, alert.properties);
    } else if (!inPlace || before->record != alert) {
      Do("UPDATE alerts SET id_group = $1, id_server = $2, position = $3, id_alert_type = $4, name = $5,"
         " properties = $6 WHERE id_alert = $7",
         owner.group, owner.server, last, alert.idAlertType, alert.name, alert.properties, alert.id);
    }
  }
}

template <typename Record>
void ConfigurationWriter::RemoveOthers(const Stored<Record>& stored, const char* sql) {
  for (const auto& [id, placed] : stored) {
    if (!placed.kept) Do(sql, id);
  }
}

}  // namespace quarl::store::sql
