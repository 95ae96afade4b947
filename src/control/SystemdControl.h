#pragma once

#include <QString>
#include <memory>

#include "control/ServiceControl.h"

namespace quarl::control {

/// The service as a unit of the service manager (org.freedesktop.systemd1 on the system bus). A thread of its own talks
/// to the bus, so that a bus that does not answer holds nobody up: State() waits a quarter of a second for a fresh
/// answer and gives the last one otherwise.
class SystemdControl final : public ServiceControl {
 public:
  explicit SystemdControl(QString unit = QStringLiteral("quarld.service"));
  ~SystemdControl() override;

  /// NotInstalled where there is no bus, no service manager on it or no such unit.
  ServiceState State() override;
  /// The service manager may ask the user for a password; refusals go to the program's log.
  bool Start() override;
  bool Stop() override;

 private:
  class Worker;

  Worker& Working();

  QString unit_;
  std::unique_ptr<Worker> worker_;  ///< since the first question
};

}  // namespace quarl::control
