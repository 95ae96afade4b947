#pragma once

#include <optional>
#include <vector>

#include "store/ServiceRecords.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// Throws StoreError when ids are used up.
void PutMessage(Connection& connection, const OutgoingMessage& message);
std::vector<ClaimedMessage> ClaimDue(Connection& connection, qint64 nowMs, int limit);
/// False: the message is not there, or not claimed.
bool TakeOut(Connection& connection, qint64 idMessage);
bool PutBack(Connection& connection, qint64 idMessage, qint64 notBeforeMs);
/// Messages that are claimed wait for a later time.
void PutBackAll(Connection& connection, qint64 notBeforeMs);
std::optional<qint64> NextDue(Connection& connection);

}  // namespace quarl::store::sql
