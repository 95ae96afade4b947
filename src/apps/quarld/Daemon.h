#pragma once

#include <QTimer>
#include <memory>
#include <optional>

#include "apps/quarld/ServiceManager.h"
#include "apps/quarld/StopSignals.h"
#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "control/ServiceLock.h"
#include "service/Service.h"
#include "service/workers/HostedRunner.h"
#include "store/sql/SqlStores.h"

namespace quarl::daemon {

struct DaemonOptions {
  store::StoreLocation location;
  int checkTimeLimitMs = 30'000;
  int stopGraceMs = 20'000;  ///< how long running checks may take after the request to stop
};

/// The service process around one service: store, lock, workers, signals and signs of life. Its event loop is the
/// application's.
class Daemon {
 public:
  explicit Daemon(DaemonOptions options);

  /// Takes the store and begins. False, with the reason said, when another service has it. Throws Error.
  [[nodiscard]] bool Begin();
  /// What the program ends with once the event loop has ended.
  int ExitCode() const { return exitCode_; }

 private:
  void Step();
  void AskedToStop();
  void Publish(control::ServiceState state);
  void End(int exitCode);

  DaemonOptions options_;
  InstallPaths paths_ = InstallPaths::OfThisProgram();
  SystemClock clock_;
  ServiceManager manager_;
  StopSignals signals_;
  std::optional<control::ServiceLock> lock_;
  service::ChildKeeper keeper_;
  std::optional<service::CgroupTree> cgroups_;
  std::unique_ptr<store::SqlStores> stores_;
  std::unique_ptr<service::WorkerPool> checks_;
  std::unique_ptr<service::WorkerPool> alerts_;
  std::unique_ptr<service::HostedRunner> runner_;
  std::unique_ptr<service::HostedSender> sender_;
  std::unique_ptr<service::Service> service_;
  QTimer step_;
  bool stopping_ = false;
  int exitCode_ = 0;
};

}  // namespace quarl::daemon
