#pragma once

#include "store/GroupStore.h"
#include "store/sql/CheckRequests.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlGroupStore final : public GroupStore {
 public:
  SqlGroupStore(Database& database, CheckRequests& requests) : database_(database), requests_(requests) {}
  qint32 AddGroup(const QString& name, const QString& description) override;
  bool RemoveGroup(qint32 idGroup) override;
  bool CheckGroup(qint32 idGroup) override;
  RecordSet GetGroups(qint32 idGroup) override;
  std::optional<GroupRecord> GetGroup(qint32 idGroup) override;
  bool UpdateGroup(qint32 idGroup, const QString& name, const QString& description) override;
  std::optional<ScheduleRecord> GetGroupSchedule(qint32 idGroup) override;
  bool SetGroupSchedule(qint32 idGroup, const ScheduleRecord& schedule) override;
  std::optional<ScheduleRecord> GetDefaultSchedule() override;
  bool SetDefaultSchedule(const ScheduleRecord& schedule) override;

 private:
  std::optional<ScheduleRecord> ReadSchedule(qint32 idGroup);
  bool WriteSchedule(qint32 idGroup, const ScheduleRecord& schedule);
  Database& database_;
  CheckRequests& requests_;
};

}  // namespace quarl::store::sql
