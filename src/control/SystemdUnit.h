#pragma once

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QString>
#include <vector>

#include "control/ServiceControl.h"

namespace quarl::control {

/// One unit of the service manager over a bus connection of its own. The calls block, each for two seconds at most.
/// One thread uses an object.
class SystemdUnit {
 public:
  explicit SystemdUnit(QString unit);
  ~SystemdUnit();
  SystemdUnit(const SystemdUnit&) = delete;
  SystemdUnit& operator=(const SystemdUnit&) = delete;

  ServiceState State();
  /// @param method "StartUnit" or "StopUnit". Does not wait for the answer; a refusal is logged at a later State().
  void Request(const QString& method);

 private:
  bool Connect();
  void ReportRefusals();

  QString unit_;
  QString name_;  ///< of the connection
  QDBusConnection bus_;
  std::vector<QDBusPendingCall> requests_;
};

/// The state code of a unit. The texts are the service manager's own: LoadState, ActiveState, FreezerState ("" where
/// it has none).
ServiceState StateOfUnit(const QString& load, const QString& active, const QString& freezer);

}  // namespace quarl::control
