#include "control/ServiceControl.h"

namespace quarl::control {

ServiceState NoService::State() {
  return ServiceState::NotInstalled;
}

bool NoService::Start() {
  return false;
}

bool NoService::Stop() {
  return false;
}

}  // namespace quarl::control
