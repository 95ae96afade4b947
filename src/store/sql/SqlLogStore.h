#pragma once

#include "base/Clock.h"
#include "store/LogStore.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlLogStore final : public LogStore {
 public:
  SqlLogStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}
  bool AddLog(qint16 severity, const QString& description) override;
  bool ClearLogs() override;
  bool SaveLog(const QString& fileName) override;
  RecordSet GetLogs() override;

 private:
  Database& database_;
  const Clock& clock_;
};

}  // namespace quarl::store::sql
