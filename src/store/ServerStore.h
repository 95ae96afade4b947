#pragma once

#include <QString>
#include <optional>

#include "base/ScheduleRecord.h"
#include "store/RecordSet.h"

namespace quarl::store {

struct ServerRecord {
  QString name;
  QString ipAddress;   ///< dotted text, as it was given
  qint32 idGroup = 0;  ///< 0 = the root group
  bool operator==(const ServerRecord&) const = default;
};

/// Servers, their schedules and failure thresholds. For threads and errors see SystemConfig.
class ServerStore {
 public:
  virtual ~ServerStore() = default;

  [[nodiscard]] virtual std::optional<ServerRecord> GetServer(qint32 idServer) = 0;
  /// Also moves a server to another group. False: no such server or group.
  [[nodiscard]] virtual bool UpdateServer(qint32 idServer, const QString& name, const QString& ipAddress,
                                          qint32 idGroup) = 0;
  /// The new id, or a number below 1: no such group, or the ids are used up.
  [[nodiscard]] virtual qint32 AddServer(const QString& name, const QString& ipAddress, qint32 idGroup) = 0;
  /// Removes the server with its tests, alerts, schedule and results. False: no such server.
  [[nodiscard]] virtual bool RemoveServer(qint32 idServer) = 0;
  /// Asks the service to run the server's tests now, and waits for the results, at most ten
  /// seconds. False: no service runs, there is no such server, or the results are not in.
  virtual bool CheckServer(qint32 idServer) = 0;
  /// IDServer, ServerName, ServerIP, IDTestState (Null: no state yet); by name, byte order of its UTF-8.
  [[nodiscard]] virtual RecordSet GetServersByGroup(qint32 idGroup) = 0;
  /// The same of every server, and GroupName (Null for the root group); by name. The argument is not looked at.
  [[nodiscard]] virtual RecordSet GetAllServers(qint32 idGroup) = 0;
  /// Nothing: the server has no schedule of its own.
  [[nodiscard]] virtual std::optional<ScheduleRecord> GetServerSchedule(qint32 idServer) = 0;
  virtual bool SetServerSchedule(qint32 idServer, const ScheduleRecord& schedule) = 0;
  /// Consecutive failures of a test at which the server counts as failed; any 16-bit number is kept as given.
  virtual bool SetFailThreshold(qint32 idServer, qint16 count) = 0;
  /// The stored threshold; 3 when none was stored.
  [[nodiscard]] virtual qint16 GetFailThreshold(qint32 idServer) = 0;
};

inline constexpr qint16 kDefaultFailThreshold = 3;

}  // namespace quarl::store
