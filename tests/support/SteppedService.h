#pragma once

#include "control/ServiceControl.h"

namespace quarl::testing {

/// A monitoring service in the state that a test gives it.
class SteppedService : public control::ServiceControl {
 public:
  control::ServiceState State() override { return state; }
  bool Start() override { return ++starts > 0 && !refuses; }
  bool Stop() override { return ++stops > 0 && !refuses; }

  control::ServiceState state = control::ServiceState::NotInstalled;
  int starts = 0;
  int stops = 0;
  bool refuses = false;  ///< what it is asked for
};

}  // namespace quarl::testing
