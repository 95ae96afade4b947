#include "control/HostControl.h"

namespace quarl::control {

HostControl::HostControl(LocalControl::Setup local, std::unique_ptr<ServiceControl> unit)
    : local_(std::move(local)), unit_(std::move(unit)) {}

ServiceState HostControl::State() {
  return Responsible().State();
}

bool HostControl::Start() {
  return Responsible().Start();
}

bool HostControl::Stop() {
  return Responsible().Stop();
}

ServiceControl& HostControl::Responsible() {
  if (!unit_) return local_;
  const ServiceState unit = unit_->State();
  // A unit that runs holds the store's lock itself.
  const bool idle = unit == ServiceState::Stopped || unit == ServiceState::NotInstalled;
  if (idle && local_.Runs()) return local_;
  return unit == ServiceState::NotInstalled ? static_cast<ServiceControl&>(local_) : *unit_;
}

}  // namespace quarl::control
