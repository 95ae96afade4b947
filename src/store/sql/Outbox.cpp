#include "store/sql/Outbox.h"

#include "store/sql/Rows.h"

namespace quarl::store::sql {
namespace {

/// What may be sent: nothing that goes to an alert before what the same alert is to be told first.
const std::string kSendable =
    "o.claimed = 0 AND NOT EXISTS (SELECT 1 FROM outbox e WHERE e.id_alert = o.id_alert AND e.thread = o.thread AND"
    " e.id_message < o.id_message)";
const std::string kDue =
    "SELECT o.id_message, o.id_alert, o.alert_name, o.id_server, o.server_name, o.address, o.thread, o.subject, o.body,"
    " o.created_ms, o.not_before_ms, o.recovery, o.group_name, o.test_name, o.result_text, o.outage_since_ms, "
    "o.attempts, y.module, a.properties FROM outbox o"
    " LEFT JOIN alerts a ON a.id_alert = o.id_alert"
    " LEFT JOIN alert_types y ON y.id_alert_type = a.id_alert_type"
    " WHERE o.not_before_ms <= $1 AND " +
    kSendable + " ORDER BY o.id_message LIMIT $2";
const std::string kNextDue = "SELECT MIN(o.not_before_ms) FROM outbox o WHERE " + kSendable;

}  // namespace

void PutMessage(Connection& connection, const OutgoingMessage& message) {
  const qint32 id = NextId(connection, "messages");
  if (id == 0) throw StoreError(QStringLiteral("The store has no number left for a message."));
  Change(connection,
         "INSERT INTO outbox (id_message, id_alert, alert_name, id_server, server_name, address, thread, subject, body,"
         " created_ms, not_before_ms, recovery, group_name, test_name, result_text, outage_since_ms)"
         " VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12, $13, $14, $15, $16)",
         id, message.idAlert, message.alertName, message.idServer, message.serverName, message.address, message.thread,
         message.subject, message.text, message.createdMs, message.notBeforeMs, message.recovery ? 1 : 0,
         message.groupName, message.testName, message.resultText, message.outageSinceMs);
}

std::vector<ClaimedMessage> ClaimDue(Connection& connection, qint64 nowMs, int limit) {
  std::vector<ClaimedMessage> claimed;
  {
    Query query(connection, kDue, nowMs, limit);
    while (query.Next()) {
      ClaimedMessage& next = claimed.emplace_back();
      next.id = query.Integer(0);
      next.message = {.idAlert = query.Int32(1),
                      .alertName = query.Text(2),
                      .idServer = query.Int32(3),
                      .serverName = query.Text(4),
                      .address = query.Text(5),
                      .thread = query.Text(6),
                      .subject = query.Text(7),
                      .text = query.Text(8),
                      .recovery = query.Int32(11) != 0,
                      .groupName = query.Text(12),
                      .testName = query.Text(13),
                      .resultText = query.Text(14),
                      .outageSinceMs = TimeOf(query, 15),
                      .createdMs = TimeOf(query, 9),
                      .notBeforeMs = TimeOf(query, 10)};
      next.attempts = query.Int32(16) + 1;
      if (query.IsNull(17)) continue;
      next.module = query.Text(17);
      next.properties = query.Text(18);
    }
  }
  for (const ClaimedMessage& next : claimed) {
    Change(connection, "UPDATE outbox SET claimed = 1, attempts = $1 WHERE id_message = $2", next.attempts, next.id);
  }
  return claimed;
}

bool TakeOut(Connection& connection, qint64 idMessage) {
  return Change(connection, "DELETE FROM outbox WHERE id_message = $1 AND claimed = 1", idMessage) > 0;
}

bool PutBack(Connection& connection, qint64 idMessage, qint64 notBeforeMs) {
  return Change(connection, "UPDATE outbox SET claimed = 0, not_before_ms = $1 WHERE id_message = $2 AND claimed = 1",
                notBeforeMs, idMessage) > 0;
}

void PutBackAll(Connection& connection, qint64 notBeforeMs) {
  Change(connection, "UPDATE outbox SET claimed = 0, not_before_ms = $1 WHERE claimed = 1", notBeforeMs);
}

std::optional<qint64> NextDue(Connection& connection) {
  Query query(connection, kNextDue);
  if (!query.Next() || query.IsNull(0)) return std::nullopt;
  return TimeOf(query, 0);
}

}  // namespace quarl::store::sql
