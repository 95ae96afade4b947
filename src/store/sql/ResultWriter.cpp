#include "store/sql/ResultWriter.h"

#include <algorithm>

#include "store/ServiceStore.h"
#include "store/sql/CheckRequests.h"
#include "store/sql/Outbox.h"
#include "store/sql/Rows.h"

namespace quarl::store::sql {
namespace {

void WriteTest(Connection& connection, const TestResult& result) {
  const auto state = static_cast<qint16>(result.state);
  // All but the first result of a test find their row.
  const bool known = Change(connection,
                            "UPDATE test_results SET id_test_state = $1, last_execution_ms = $2, last_result = $3,"
                            " performance = $4, consecutive_failures = $5, failed = $6, since_ms = $7"
                            " WHERE id_test = $8",
                            state, result.lastExecutionMs, result.text, result.performance, result.consecutiveFailures,
                            result.failed, result.sinceMs, result.idTest) > 0;
  if (known) return;
  Change(connection,
         "INSERT INTO test_results (id_test_state, last_execution_ms, last_result, performance, consecutive_failures,"
         " failed, since_ms, id_test) SELECT $1, $2, $3, $4, $5, $6, $7, id_test FROM tests WHERE id_test = $8",
         state, result.lastExecutionMs, result.text, result.performance, result.consecutiveFailures, result.failed,
         result.sinceMs, result.idTest);
}

void WriteServer(Connection& connection, const ServerState& state) {
  Change(connection,
         "INSERT INTO server_states (id_server, id_test_state, failed, since_ms) SELECT id_server, $1, $2, $3"
         " FROM servers WHERE id_server = $4 ON CONFLICT (id_server) DO UPDATE SET"
         " id_test_state = excluded.id_test_state, failed = excluded.failed, since_ms = excluded.since_ms",
         static_cast<qint16>(state.state), state.failed, state.sinceMs, state.idServer);
}

}  // namespace

void WriteLogEntry(Connection& connection, const LogEntry& entry) {
  Change(connection, "INSERT INTO log_records (logged_ms, id_severity, description) VALUES ($1, $2, $3)", entry.timeMs,
         static_cast<qint16>(entry.severity), entry.description);
}

int ReadLogRetention(Connection& connection) {
  Query query(connection, "SELECT value FROM settings WHERE name = 'log_retention'");
  return query.Next() ? std::max(query.Int32(0), 1) : kDefaultLogRetention;
}

void ShortenLog(Connection& connection) {
  // Records are only ever removed from the oldest on, so that the ids between first and last are their number.
  Change(connection, "DELETE FROM log_records WHERE id_log <= (SELECT MAX(id_log) FROM log_records) - $1",
         ReadLogRetention(connection));
}

void WriteBatch(Connection& connection, const ResultBatch& batch) {
  for (const TestResult& result : batch.tests) WriteTest(connection, result);
  for (const ServerState& state : batch.servers) WriteServer(connection, state);
  for (const qint32 id : batch.statelessServers) {
    Change(connection, "DELETE FROM server_states WHERE id_server = $1", id);
  }
  for (const LogEntry& entry : batch.log) WriteLogEntry(connection, entry);
  if (!batch.log.empty()) ShortenLog(connection);
  for (const OutgoingMessage& message : batch.messages) PutMessage(connection, message);
  for (const qint64 id : batch.answered) AnswerRequest(connection, id);
}

}  // namespace quarl::store::sql
