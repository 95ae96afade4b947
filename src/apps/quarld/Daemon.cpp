#include "apps/quarld/Daemon.h"

#include <QCoreApplication>
#include <algorithm>

#include "apps/ServiceFiles.h"
#include "apps/quarld/ServiceOutput.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::daemon {
namespace {

constexpr int kFailed = 1;
constexpr int kMomentMs = 50;

QString HostProgram(const InstallPaths& paths) {
  return paths.ApplicationFolder() + QStringLiteral("/quarl-modulehost");
}

bool RefusedBy(const std::optional<control::ServiceLock::Holder>& holder) {
  ServiceOutput::Say(
      Priority::Error,
      QStringLiteral("The store is served by another service, process %1.").arg(holder ? holder->pid : 0));
  return false;
}

QString Summary(const service::ServiceFigures& figures) {
  return QStringLiteral("Stopped after %1 checks, %2 skipped; 99 of 100 began less than %3 ms late, all less than %4.")
      .arg(figures.started)
      .arg(figures.skipped)
      .arg(figures.lateness.ShareBelowMs(0.99))
      .arg(figures.lateness.MaxMs() + 1);
}

QString Described(const store::ServiceInstance& instance) {
  return QStringLiteral("The store is served by another service, process %1 on %2.")
      .arg(instance.process.pid)
      .arg(instance.process.host);
}

}  // namespace

Daemon::Daemon(DaemonOptions options) : options_(std::move(options)), signals_([this] { AskedToStop(); }) {
  step_.setSingleShot(true);
  step_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&step_, &QTimer::timeout, &step_, [this] { Step(); });
}

bool Daemon::Begin() {
  // One that is refused does not touch the store. A new store has its real path, and so its lock, when it has been
  // made.
  if (const auto holder = control::ServiceLock::Look(apps::ServiceLockFile(options_.location)))
    return RefusedBy(holder);
  store::SqlSetup setup{
      .location = options_.location, .paths = paths_, .inspector = plugins::InspectModule, .clock = &clock_};
  stores_ = std::make_unique<store::SqlStores>(setup);
  stores_->Open();
  if (const QString file = apps::ServiceLockFile(options_.location); !file.isEmpty()) {
    lock_ = control::ServiceLock::Take(file);
    if (!lock_) return RefusedBy(control::ServiceLock::Look(file));
  }
  cgroups_ = service::CgroupTree::OfThisProcess();
  service::PoolSetup pool{.program = HostProgram(paths_)};
  if (cgroups_) pool.cgroups = &*cgroups_;
  const auto log = [](const QString& line) { ServiceOutput::Say(Priority::Info, line); };
  checks_ = std::make_unique<service::WorkerPool>(pool, keeper_);
  checks_->log = log;
  pool.threadsAWorker = 16;
  pool.workersAModule = 1;
  alerts_ = std::make_unique<service::WorkerPool>(pool, keeper_);
  alerts_->log = log;
  runner_ = std::make_unique<service::HostedRunner>(*checks_, paths_);
  sender_ = std::make_unique<service::HostedSender>(*alerts_, paths_);

  service::ServiceOptions options;
  options.checkTimeLimitMs = options_.checkTimeLimitMs;
  options.wake = [this] { step_.start(0); };
  options.problem = [](const QString& line) { ServiceOutput::Say(Priority::Warning, line); };
  service_ = std::make_unique<service::Service>(service::ServiceParts{stores_->Service(), *runner_, *sender_, clock_},
                                                options);
  if (const auto other = service_->Start()) {
    ServiceOutput::Say(Priority::Error, Described(*other));
    return false;
  }
  Publish(control::ServiceState::Running);
  manager_.Ready();
  ServiceOutput::Say(Priority::Notice, QStringLiteral("Serving the store %1.").arg(options_.location.Text()));
  step_.start(0);
  return true;
}

void Daemon::Step() {
  const qint64 wait = service_->Step();
  manager_.Alive();
  if (service_->LostStore()) {
    ServiceOutput::Say(Priority::Error, QStringLiteral("Another service has taken the store."));
    return End(kFailed);
  }
  if (stopping_ && service_->Ended()) {
    ServiceOutput::Say(Priority::Notice, Summary(service_->Figures()));
    return End(exitCode_);
  }
  const service::ServiceFigures figures = service_->Figures();
  if (!stopping_) {
    manager_.Status(QStringLiteral("%1 tests, %2 scheduled").arg(figures.tests).arg(figures.scheduled));
  }
  // What is due within the same moment is done in one step.
  if (!step_.isActive()) step_.start(wait == 0 ? 0 : std::max(static_cast<int>(wait), kMomentMs));
}

void Daemon::AskedToStop() {
  if (!service_ || stopping_) return End(kFailed);  // before the beginning, or asked again
  stopping_ = true;
  manager_.Stopping();
  Publish(control::ServiceState::StopPending);
  ServiceOutput::Say(Priority::Notice, QStringLiteral("Stopping when the running checks have ended."));
  service_->Stop(options_.stopGraceMs);
  step_.start(0);
}

void Daemon::Publish(control::ServiceState state) {
  if (lock_) lock_->Publish(state);
}

void Daemon::End(int exitCode) {
  exitCode_ = exitCode;
  QCoreApplication::exit(exitCode);
}

}  // namespace quarl::daemon
