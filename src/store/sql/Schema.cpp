#include "store/sql/Schema.h"

#include <QUuid>
#include <array>

#include "store/sql/SqlError.h"
#include "store/sql/SqlText.h"

namespace quarl::store::sql {
namespace {

constexpr const char* kScheduleColumns = R"sql(enabled INTEGER NOT NULL CHECK (enabled IN (0, 1)),
  start_date %text%,
  start_time %text%,
  delta_time INTEGER NOT NULL CHECK (delta_time BETWEEN -32768 AND 32767),
  delta_type INTEGER NOT NULL CHECK (delta_type BETWEEN -32768 AND 32767))sql";

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
  %schedule%
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
  %schedule%
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

// What the monitoring service keeps here. None of it is configuration.
constexpr const char* kServiceTables = R"sql(
ALTER TABLE test_results ADD COLUMN performance %opaque% NOT NULL DEFAULT '';
ALTER TABLE test_results ADD COLUMN failed INTEGER NOT NULL DEFAULT 0 CHECK (failed IN (0, 1));
ALTER TABLE test_results ADD COLUMN since_ms %number64% NOT NULL DEFAULT 0;
ALTER TABLE server_states ADD COLUMN failed INTEGER NOT NULL DEFAULT 0 CHECK (failed IN (0, 1));
ALTER TABLE server_states ADD COLUMN since_ms %number64% NOT NULL DEFAULT 0;
CREATE TABLE settings (
  name %text% NOT NULL PRIMARY KEY,
  value %number64% NOT NULL
)%end%;
CREATE TABLE service_instance (
  id INTEGER NOT NULL PRIMARY KEY CHECK (id = 1),
  instance_id %text% NOT NULL,
  host %text% NOT NULL,
  machine %text% NOT NULL,
  boot %text% NOT NULL,
  scope %text% NOT NULL,
  pid %number64% NOT NULL,
  start_ticks %number64% NOT NULL,
  started_ms %number64% NOT NULL,
  beat_ms %number64% NOT NULL,
  state INTEGER NOT NULL CHECK (state BETWEEN 1 AND 7)
)%end%;
CREATE TABLE check_requests (
  id_request INTEGER NOT NULL PRIMARY KEY CHECK (id_request BETWEEN 1 AND 2147483647),
  id_group INTEGER REFERENCES groups ON DELETE CASCADE,
  id_server INTEGER REFERENCES servers ON DELETE CASCADE,
  id_test INTEGER REFERENCES tests ON DELETE CASCADE,
  requested_ms %number64% NOT NULL,
  answered INTEGER NOT NULL DEFAULT 0 CHECK (answered IN (0, 1))
)%end%;
CREATE TABLE outbox (
  id_message INTEGER NOT NULL PRIMARY KEY CHECK (id_message BETWEEN 1 AND 2147483647),
  id_alert INTEGER NOT NULL,
  alert_name %text% NOT NULL,
  id_server INTEGER NOT NULL,
  server_name %text% NOT NULL,
  address %text% NOT NULL,
  thread %text% NOT NULL,
  subject %opaque% NOT NULL,
  body %opaque% NOT NULL,
  recovery INTEGER NOT NULL CHECK (recovery IN (0, 1)),
  group_name %text% NOT NULL,
  test_name %text% NOT NULL,
  result_text %text% NOT NULL,
  outage_since_ms %number64% NOT NULL,
  created_ms %number64% NOT NULL,
  not_before_ms %number64% NOT NULL,
  attempts INTEGER NOT NULL DEFAULT 0,
  claimed INTEGER NOT NULL DEFAULT 0 CHECK (claimed IN (0, 1))
)%end%;
CREATE INDEX outbox_order ON outbox (id_alert, thread, id_message);
INSERT INTO sequences (name, last_id) VALUES ('messages', 0), ('requests', 0);
INSERT INTO settings (name, value) VALUES ('log_retention', 10000);
)sql";

// What a change of the configuration is. Results, states and the log are none.
constexpr std::array kConfiguration = {"groups", "group_schedules", "servers",    "server_schedules",
                                       "tests",  "alerts",          "test_types", "alert_types"};

std::string InWordsOf(const char* sql, const SchemaWords& words) {
  return Filled(sql, {{"%schedule%", kScheduleColumns},
                      {"%text%", words.text},
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

void ToVersion2(Connection& connection, const SchemaWords& words) {
  connection.Execute(InWordsOf(kServiceTables, words));
}

using Step = void (*)(Connection&, const SchemaWords&);
// The step at place n brings a store from version n to version n + 1. A step, once released, is never changed.
constexpr std::array<Step, kSchemaVersion> kSteps = {&ToVersion1, &ToVersion2};

}  // namespace

void Migrate(Connection& connection, Dialect& dialect, int wanted) {
  if (dialect.Version(connection) == wanted) return;
  Transaction transaction(connection, Connection::Access::Write);
  const int version = dialect.Version(connection);  // another program may have been faster
  if (version > wanted || version < 0) {
    throw SqlError(Fault::Foreign,
                   QStringLiteral("The store %1 is of version %2, this program knows versions up to %3.")
                       .arg(dialect.Name())
                       .arg(version)
                       .arg(wanted));
  }
  const SchemaWords words = dialect.Words();
  for (auto step = static_cast<std::size_t>(version); step < static_cast<std::size_t>(wanted); ++step) {
    kSteps[step](connection, words);
  }
  dialect.SetVersion(connection, wanted);
  transaction.Commit();
}

}  // namespace quarl::store::sql
