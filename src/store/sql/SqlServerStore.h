#pragma once

#include "store/ServerStore.h"
#include "store/sql/CheckRequests.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlServerStore final : public ServerStore {
 public:
  SqlServerStore(Database& database, CheckRequests& requests) : database_(database), requests_(requests) {}
  std::optional<ServerRecord> GetServer(qint32 idServer) override;
  bool UpdateServer(qint32 idServer, const QString& name, const QString& ipAddress, qint32 idGroup) override;
  qint32 AddServer(const QString& name, const QString& ipAddress, qint32 idGroup) override;
  bool RemoveServer(qint32 idServer) override;
  bool CheckServer(qint32 idServer) override;
  RecordSet GetServersByGroup(qint32 idGroup) override;
  RecordSet GetAllServers(qint32 idGroup) override;
  std::optional<ScheduleRecord> GetServerSchedule(qint32 idServer) override;
  bool SetServerSchedule(qint32 idServer, const ScheduleRecord& schedule) override;
  bool SetFailThreshold(qint32 idServer, qint16 count) override;
  qint16 GetFailThreshold(qint32 idServer) override;

 private:
  Database& database_;
  CheckRequests& requests_;
};

}  // namespace quarl::store::sql
