#pragma once

#include <memory>

#include "control/LocalControl.h"
#include "control/ServiceControl.h"

namespace quarl::control {

/// The service on this host: a process of this user that serves the store, while there is one; else the unit of the
/// service manager where one is installed and may serve this store; else what the user's own process could be.
class HostControl final : public ServiceControl {
 public:
  /// @param unit null where the service manager's unit serves another store.
  HostControl(LocalControl::Setup local, std::unique_ptr<ServiceControl> unit);

  ServiceState State() override;
  bool Start() override;
  bool Stop() override;

 private:
  ServiceControl& Responsible();

  LocalControl local_;
  std::unique_ptr<ServiceControl> unit_;
};

}  // namespace quarl::control
