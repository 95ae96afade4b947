#pragma once

#include <QString>

#include "store/RecordSet.h"

namespace quarl::store {

/// Severities of log records, as stored.
enum class Severity : qint16 { Information = 1, Warning = 2, Error = 3 };

/// The service's log. For threads and errors see SystemConfig.
class LogStore {
 public:
  virtual ~LogStore() = default;

  /// Adds a record with the time of the store's clock. False: a severity outside 1 to 3.
  virtual bool AddLog(qint16 severity, const QString& description) = 0;
  virtual bool ClearLogs() = 0;
  /// Writes the whole log to a file: one record a line, "time severity description" separated by tabs; the time is
  /// ISO 8601 with offset, control characters and backslashes of the description are escaped, the encoding is
  /// UTF-8. The file is written whole or not at all; false leaves what was there as it was.
  [[nodiscard]] virtual bool SaveLog(const QString& fileName) = 0;
  /// LogDescription, IDSeverity, LogDate; oldest first.
  [[nodiscard]] virtual RecordSet GetLogs() = 0;
};

}  // namespace quarl::store
