#pragma once

#include <QString>

#include "store/RecordSet.h"

namespace quarl::store {

/// The monitoring service and the installed plug-in types.
/// Every operation of every store object runs synchronously in one transaction and throws StoreError when the store
/// cannot be reached or is broken; nothing is written then.
class SystemConfig {
 public:
  virtual ~SystemConfig() = default;

  /// -1 not installed, 1 stopped, 2 start pending, 3 stop pending, 4 running, 5 continue pending, 6 pause pending,
  /// 7 paused.
  [[nodiscard]] virtual qint16 GetServiceState() = 0;
  /// True when the request was taken; the effect is seen in the state later.
  virtual bool StartService() = 0;
  virtual bool StopService() = 0;

  /// IDTestType, TestType, Module; in the order in which they were added.
  [[nodiscard]] virtual RecordSet GetTestTypes() = 0;
  /// IDAlertType, AlertType, Module; in the order in which they were added.
  [[nodiscard]] virtual RecordSet GetAlertTypes() = 0;

  /// Installs a plug-in module: checks that it is a whole module with a picture, brings a copy into the module
  /// folder when it is not there, and records the type. An empty product name stands for the file's base name.
  /// @param moduleFile full path of the module.
  /// @return false when the module was not accepted: not readable, not a whole module, without picture, of a name
  ///         that another file in the folder or another type already has. Nothing has changed then.
  [[nodiscard]] virtual bool AddTestType(const QString& moduleFile, const QString& productName) = 0;
  /// False: the type is not there, or a configured test still uses it. The module file stays in its folder.
  [[nodiscard]] virtual bool RemoveTestType(qint32 idTestType) = 0;
  [[nodiscard]] virtual bool AddAlertType(const QString& moduleFile, const QString& productName) = 0;
  [[nodiscard]] virtual bool RemoveAlertType(qint32 idAlertType) = 0;
};

}  // namespace quarl::store
