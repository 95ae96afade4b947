#pragma once

#include <unordered_map>
#include <unordered_set>

#include "store/Configuration.h"
#include "store/sql/Connection.h"
#include "store/sql/Schedules.h"

namespace quarl::store::sql {

/// Makes a store hold a checked configuration by writing what differs from what it holds. Belongs into a
/// transaction; used once. Throws StoreError when ids are used up.
class ConfigurationWriter {
 public:
  explicit ConfigurationWriter(Connection& connection);
  /// True when something was written.
  bool Write(const Configuration& configuration);

 private:
  struct Owner {
    std::optional<qint32> group, server;
    bool operator==(const Owner&) const = default;
  };
  template <typename Record>
  struct Placed {
    Record record;  // without what is below it
    Owner owner;
    qint64 position = 0;
    bool kept = false;
  };
  template <typename Record>
  using Stored = std::unordered_map<qint32, Placed<Record>>;
  struct TypeSql;

  void Remember(const Configuration& stored);
  void RememberGroup(const GroupConfiguration& group);
  void RememberPositions();
  void RaiseSequences(const Configuration& configuration);
  void WriteTypes(const std::vector<TypeConfiguration>& types, Stored<TypeConfiguration>& stored, const TypeSql& sql);
  /// @param before the stored group, null for a new one.
  void WriteGroup(const GroupConfiguration& group, const Placed<GroupConfiguration>* before);
  void WriteContent(const GroupConfiguration& group, qint32 idGroup);
  void WriteServer(const ServerConfiguration& server, qint32 idGroup);
  /// @param before the stored one.
  void WriteSchedule(ScheduleOwner owner, qint32 id, const std::optional<ScheduleRecord>& before,
                     const std::optional<ScheduleRecord>& schedule);
  void WriteTest(const TestConfiguration& test, qint32 idServer);
  void WriteAlerts(const std::vector<AlertConfiguration>& alerts, const Owner& owner);
  template <typename Record>
  void RemoveOthers(const Stored<Record>& stored, const char* sql);
  qint32 IdFor(qint32 wanted, const char* sequence);
  template <typename... Arguments>
  void Do(const char* sql, const Arguments&... arguments);

  Connection& connection_;
  bool changed_ = false;
  Stored<TypeConfiguration> testTypes_, alertTypes_;
  Stored<GroupConfiguration> groups_;
  Stored<ServerConfiguration> servers_;
  Stored<TestConfiguration> tests_;
  Stored<AlertConfiguration> alerts_;
};

}  // namespace quarl::store::sql
