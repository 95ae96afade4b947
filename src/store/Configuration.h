#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "base/ScheduleRecord.h"

namespace quarl::store {

/// The whole configuration of a store as plain values: what an export holds and what an import gives. Test results,
/// the log and module files are no part of it. Ids are those of the store; 0 in a record to be written asks for a
/// new one.
struct TypeConfiguration {
  qint32 id = 0;
  QString name;
  QString module;  ///< file name in the module folder of its kind
  bool operator==(const TypeConfiguration&) const = default;
};

struct TestConfiguration {
  qint32 id = 0;
  qint32 idTestType = 0;
  QString name;
  QString properties;
  bool operator==(const TestConfiguration&) const = default;
};

struct AlertConfiguration {
  qint32 id = 0;
  qint32 idAlertType = 0;
  QString name;
  QString properties;
  bool operator==(const AlertConfiguration&) const = default;
};

struct ServerConfiguration {
  qint32 id = 0;
  QString name;
  QString ipAddress;
  std::optional<qint16> failThreshold;  ///< nothing: none stored
  std::optional<ScheduleRecord> schedule;
  std::vector<TestConfiguration> tests;
  std::vector<AlertConfiguration> alerts;
  bool operator==(const ServerConfiguration&) const = default;
};

/// A group; the root group is the one with id 0, whose name and description are empty and whose schedule is the
/// default schedule.
struct GroupConfiguration {
  qint32 id = 0;
  QString name;
  QString description;
  std::optional<ScheduleRecord> schedule;
  std::vector<ServerConfiguration> servers;
  std::vector<AlertConfiguration> alerts;
  bool operator==(const GroupConfiguration&) const = default;
};

struct Configuration {
  std::vector<TypeConfiguration> testTypes;
  std::vector<TypeConfiguration> alertTypes;
  GroupConfiguration root;
  std::vector<GroupConfiguration> groups;
  bool operator==(const Configuration&) const = default;
};

/// A configuration as it was read, with the store's state then.
struct ConfigurationSnapshot {
  Configuration configuration;
  QString storeId;      ///< a UUID that the store got when it was made
  qint64 revision = 0;  ///< grows with every change of the configuration
};

/// Reads and writes a configuration whole. For threads and errors see SystemConfig.
class ConfigurationStore {
 public:
  virtual ~ConfigurationStore() = default;
  /// In one read transaction; lists in the order of the store's queries, groups and servers by name.
  [[nodiscard]] virtual ConfigurationSnapshot Read() = 0;
  /// Makes the store hold exactly this configuration, in one transaction: records with an id that the store has are
  /// changed (and keep their test results), others are added under the given id, or a new one for id 0; what the
  /// configuration does not hold is removed.
  /// @param revision what Read() gave; throws StoreError when the store was changed since.
  /// @param storeId the store whose ids these are; empty: this one. When it is another one, no record is one that
  ///        this store has, so that no results are kept, and this store takes that id for its own.
  /// Throws StoreError, with nothing written, for an id used twice or below 0 (groups and servers share one
  /// sequence, tests, alerts and both kinds of types have one each), for a type that is not in the configuration,
  /// and for a type without a module file name.
  virtual void Write(const Configuration& configuration, qint64 revision, const QString& storeId = {}) = 0;
};

}  // namespace quarl::store
