#pragma once

#include "store/GroupStore.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlGroupStore final : public GroupStore {
 public:
  explicit SqlGroupStore(Database& database) : database_(database) {}
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
};

/// Writes the schedule of a group or of the root group. False: no such group.
bool PutGroupSchedule(Connection& connection, qint32 idGroup, const ScheduleRecord& schedule);

}  // namespace quarl::store::sql
