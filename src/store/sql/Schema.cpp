#include "store/sql/Schema.h"

#include <QUuid>
#include <array>

#include "store/sql/SqlError.h"

namespace quarl::store::sql {
namespace {

// %text%, %opaque%, %number64%, %row_id% and %end% are the dialect's words.
constexpr const char* kTables = R"sql(
CREATE TABLE store_properties (
  id INTEGER NOT NULL PRIMARY KEY CHECK (id = 1),
  store_id %text% NOT NULL,
  revision %number64% NOT NULL
)%end%;
CREATE TABLE sequences (
  name %text% NOT NULL PRIMARY KEY,
  last_id INTEGER NOT NULL CHECK (last_id BETWEEN 0 AND 2147483647)
)%end%;
CREATE TABLE test_states (
  id_test_state INTEGER NOT NULL PRIMARY KEY,
  name %text% NOT NULL
)%end%;
CREATE TABLE severities (
  id_severity INTEGER NOT NULL PRIMARY KEY,
  name %text% NOT NULL
)%end%;
CREATE TABLE test_types (
  id_test_type INTEGER NOT NULL PRIMARY KEY CHECK (id_test_type BETWEEN 1 AND 2147483647),
  name %text% NOT NULL,
  module %text% NOT NULL
)%end%;
CREATE TABLE alert_types (
  id_alert_type INTEGER NOT NULL PRIMARY KEY CHECK (id_alert_type BETWEEN 1 AND 2147483647),
  name %text% NOT NULL,
  module %text% NOT NULL
)%end%;
CREATE TABLE groups (
  id_group INTEGER NOT NULL PRIMARY KEY CHECK (id_group BETWEEN 0 AND 2147483647),
  name %text% NOT NULL,
  description %text% NOT NULL
)%end%;
CREATE TABLE group_schedules (
  id_group INTEGER NOT NULL PRIMARY KEY REFERENCES groups ON DELETE CASCADE,
  enabled INTEGER NOT NULL CHECK (enabled IN (0, 1)),
  start_date %text%,
  start_time %text%,
  delta_time INTEGER NOT NULL CHECK (delta_time BETWEEN -32768 AND 32767),
  delta_type INTEGER NOT NULL CHECK (delta_type BETWEEN -32768 AND 32767)
)%end%;
CREATE TABLE servers (
  id_server INTEGER NOT NULL PRIMARY KEY CHECK (id_server BETWEEN 1 AND 2147483647),
  id_group INTEGER NOT NULL REFERENCES groups ON DELETE CASCADE,
  name %text% NOT NULL,
  ip_address %text% NOT NULL,
  fail_threshold INTEGER CHECK (fail_threshold BETWEEN -32768 AND 32767)
)%end%;
CREATE TABLE server_schedules (
  id_server INTEGER NOT NULL PRIMARY KEY REFERENCES servers ON DELETE CASCADE,
  enabled INTEGER NOT NULL CHECK (enabled IN (0, 1)),
  start_date %text%,
  start_time %text%,
  delta_time INTEGER NOT NULL CHECK (delta_time BETWEEN -32768 AND 32767),
  delta_type INTEGER NOT NULL CHECK (delta_type BETWEEN -32768 AND 32767)
)%end%;
CREATE TABLE server_states (
  id_server INTEGER NOT NULL PRIMARY KEY REFERENCES servers ON DELETE CASCADE,
  id_test_state INTEGER NOT NULL REFERENCES test_states
)%end%;
CREATE TABLE tests (
  id_test INTEGER NOT NULL PRIMARY KEY CHECK (id_test BETWEEN 1 AND 2147483647),
  id_server INTEGER NOT NULL REFERENCES servers ON DELETE CASCADE,
  id_test_type INTEGER NOT NULL REFERENCES test_types,
  name %text% NOT NULL,
  properties %opaque% NOT NULL
)%end%;
CREATE TABLE test_results (
  id_test INTEGER NOT NULL PRIMARY KEY REFERENCES tests ON DELETE CASCADE,
  id_test_state INTEGER NOT NULL REFERENCES test_states,
  last_execution_ms %number64%,
  last_result %opaque%,
  consecutive_failures INTEGER NOT NULL DEFAULT 0 CHECK (consecutive_failures BETWEEN 0 AND 2147483647)
)%end%;
CREATE TABLE alerts (
  id_alert INTEGER NOT NULL PRIMARY KEY CHECK (id_alert BETWEEN 1 AND 2147483647),
  id_group INTEGER REFERENCES groups ON DELETE CASCADE,
  id_server INTEGER REFERENCES servers ON DELETE CASCADE,
  position %number64% NOT NULL,
  id_alert_type INTEGER NOT NULL REFERENCES alert_types,
  name %text% NOT NULL,
  properties %opaque% NOT NULL,
  CHECK ((id_group IS NULL) <> (id_server IS NULL))
)%end%;
CREATE TABLE log_records (
  id_log %row_id%,
  logged_ms %number64% NOT NULL,
  id_severity INTEGER NOT NULL REFERENCES severities,
  description %opaque% NOT NULL
)%end%;
)sql";

// Every query of the tree, and that of all servers, is answered from one of these alone.
constexpr const char* kIndexes = R"sql(
CREATE INDEX groups_tree ON groups (name, id_group DESC);
CREATE INDEX servers_tree ON servers (id_group, name, id_server DESC);
CREATE INDEX servers_list ON servers (name, id_server DESC, id_group, ip_address);
CREATE INDEX tests_tree ON tests (id_server, id_test, id_test_type, name);
CREATE INDEX server_alerts_tree ON alerts (id_server, position, id_alert, id_alert_type, name)
  WHERE id_server IS NOT NULL;
CREATE INDEX group_alerts_tree ON alerts (id_group, position, id_alert, id_alert_type, name)
  WHERE id_group IS NOT NULL;
CREATE INDEX tests_type ON tests (id_test_type);
CREATE INDEX alerts_type ON alerts (id_alert_type);
)sql";

constexpr const char* kFirstRows = R"sql(
INSERT INTO sequences (name, last_id)
  VALUES ('nodes', 0), ('tests', 0), ('alerts', 0), ('test_types', 0), ('alert_types', 0);
INSERT INTO test_states (id_test_state, name) VALUES (1, 'passed'), (2, 'not run yet'), (3, 'failed');
INSERT INTO severities (id_severity, name) VALUES (1, 'information'), (2, 'warning'), (3, 'error');
INSERT INTO groups (id_group, name, description) VALUES (0, '', '');
)sql";

// What a change of the configuration is. Results, states and the log are none.
constexpr std::array kConfiguration = {"groups", "group_schedules", "servers",    "server_schedules",
                                       "tests",  "alerts",          "test_types", "alert_types"};

using Places = std::initializer_list<std::pair<std::string_view, std::string_view>>;

std::string Filled(std::string text, Places places) {
  for (const auto& [place, word] : places) {
    for (auto at = text.find(place); at != std::string::npos; at = text.find(place, at + word.size())) {
      text.replace(at, place.size(), word);
    }
  }
  return text;
}

std::string InWordsOf(const char* sql, const SchemaWords& words) {
  return Filled(sql, {{"%text%", words.text},
                      {"%opaque%", words.opaque},
                      {"%number64%", words.number64},
                      {"%row_id%", words.rowId},
                      {"%end%", words.tableEnd}});
}

void CountChanges(Connection& connection, const SchemaWords& words) {
  for (const char* table : kConfiguration) {
    for (const char* event : {"INSERT", "UPDATE", "DELETE"}) {
      connection.Execute(Filled(words.countChange, {{"%table%", table}, {"%event%", event}}));
    }
  }
}

void ToVersion1(Connection& connection, const SchemaWords& words) {
  connection.Execute(InWordsOf(kTables, words));
  connection.Execute(InWordsOf(kIndexes, words));
  connection.Execute(kFirstRows);
  Change(connection, "INSERT INTO store_properties (id, store_id, revision) VALUES (1, $1, 1)",
         QUuid::createUuid().toString(QUuid::WithoutBraces));
  CountChanges(connection, words);
}

using Step = void (*)(Connection&, const SchemaWords&);
// The step at place n brings a store from version n to version n + 1. A step, once released, is never changed.
constexpr std::array<Step, kSchemaVersion> kSteps = {&ToVersion1};

}  // namespace

void Migrate(Connection& connection, Dialect& dialect) {
  if (dialect.Version(connection) == kSchemaVersion) return;
  Transaction transaction(connection, Connection::Access::Write);
  const int version = dialect.Version(connection);  // another program may have been faster
  if (version > kSchemaVersion || version < 0) {
    throw SqlError(Fault::Foreign,
                   QStringLiteral("The store %1 is of version %2, this program knows versions up to %3.")
                       .arg(dialect.Name())
                       .arg(version)
                       .arg(kSchemaVersion));
  }
  const SchemaWords words = dialect.Words();
  for (auto step = static_cast<std::size_t>(version); step < kSteps.size(); ++step) {
    kSteps[step](connection, words);
  }
  dialect.SetVersion(connection, kSchemaVersion);
  transaction.Commit();
}

}  // namespace quarl::store::sql
