#pragma once

#include "store/ServiceRecords.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// Writes what the service found out. Belongs into a transaction. Throws StoreError when ids are used up.
void WriteBatch(Connection& connection, const ResultBatch& batch);
void WriteLogEntry(Connection& connection, const LogEntry& entry);
/// Removes the oldest log records beyond the number that is to be kept.
void ShortenLog(Connection& connection);
int ReadLogRetention(Connection& connection);

}  // namespace quarl::store::sql
