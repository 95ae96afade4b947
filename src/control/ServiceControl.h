#pragma once

#include <QtGlobal>

namespace quarl::control {

/// State codes of the monitoring service.
enum class ServiceState : qint16 {
  NotInstalled = -1,
  Stopped = 1,
  StartPending = 2,
  StopPending = 3,
  Running = 4,
  ContinuePending = 5,
  PausePending = 6,
  Paused = 7,
};

/// State, start and stop of the monitoring service. One thread uses an object; an answer comes within a fraction of a
/// second, whatever the other side does.
class ServiceControl {
 public:
  virtual ~ServiceControl() = default;
  virtual ServiceState State() = 0;
  /// True when the request was accepted; the effect is seen in State() later.
  virtual bool Start() = 0;
  virtual bool Stop() = 0;
};

/// Stands where no monitoring service is installed.
class NoService : public ServiceControl {
 public:
  ServiceState State() override;
  bool Start() override;
  bool Stop() override;
};

}  // namespace quarl::control
