#pragma once

#include <QString>
#include <optional>

#include "base/ScheduleRecord.h"
#include "store/RecordSet.h"

namespace quarl::store {

struct GroupRecord {
  QString name;
  QString description;
  bool operator==(const GroupRecord&) const = default;
};

/// Server groups, their schedules and the default schedule. The root group has id 0; it is no record of this store
/// and can be neither read, changed nor removed here. For threads and errors see SystemConfig.
class GroupStore {
 public:
  virtual ~GroupStore() = default;

  /// The new id, or a number below 1 when the ids are used up. Groups and servers share one sequence of ids.
  [[nodiscard]] virtual qint32 AddGroup(const QString& name, const QString& description) = 0;
  /// Removes the group with its servers, their tests, all their alerts and schedules. False: no such group.
  [[nodiscard]] virtual bool RemoveGroup(qint32 idGroup) = 0;
  /// Asks the service to run the tests of the group's servers now (0: of every server), and waits for the
  /// results, at most ten seconds. False: no service runs, there is no such group, or the results are not in.
  virtual bool CheckGroup(qint32 idGroup) = 0;
  /// IDGroup, GroupName; by name, byte order of its UTF-8. The argument is not looked at.
  [[nodiscard]] virtual RecordSet GetGroups(qint32 idGroup) = 0;
  [[nodiscard]] virtual std::optional<GroupRecord> GetGroup(qint32 idGroup) = 0;
  [[nodiscard]] virtual bool UpdateGroup(qint32 idGroup, const QString& name, const QString& description) = 0;
  [[nodiscard]] virtual std::optional<ScheduleRecord> GetGroupSchedule(qint32 idGroup) = 0;
  virtual bool SetGroupSchedule(qint32 idGroup, const ScheduleRecord& schedule) = 0;
  /// The schedule of the root group.
  [[nodiscard]] virtual std::optional<ScheduleRecord> GetDefaultSchedule() = 0;
  [[nodiscard]] virtual bool SetDefaultSchedule(const ScheduleRecord& schedule) = 0;
};

}  // namespace quarl::store
