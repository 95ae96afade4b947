#include <QThread>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"

namespace quarl::ctl {
namespace {

constexpr qint16 kStopped = 1;
constexpr qint16 kStarting = 2;
constexpr qint16 kStopping = 3;
constexpr qint16 kRunning = 4;
constexpr int kPollMs = 50;
constexpr int kLongestStartMs = 20'000;
constexpr int kLongestStopMs = 60'000;

/// Waits for a state; not longer when the service was on its way and has come to another one.
bool Becomes(store::SystemConfig& system, qint16 wanted, int limitMs) {
  bool onItsWay = false;
  for (int waited = 0; waited <= limitMs; waited += kPollMs) {
    const qint16 state = system.GetServiceState();
    if (state == wanted) return true;
    const bool pending = state == kStarting || state == kStopping;
    if (onItsWay && !pending) return false;
    onItsWay = pending;
    QThread::msleep(kPollMs);
  }
  return false;
}

void Start(Session& session) {
  const auto stores = session.store.OpenExisting();
  store::SystemConfig& system = stores->System();
  const qint16 state = system.GetServiceState();
  if (state == kRunning) return session.terminal.PrintLine(QStringLiteral("The service runs already."));
  if (state != kStarting && !system.StartService())
    throw CommandError(QStringLiteral("No service is installed that could be started."));
  if (!Becomes(system, kRunning, kLongestStartMs)) {
    throw CommandError(QStringLiteral("The service did not start; its messages say why."));
  }
  session.terminal.PrintLine(QStringLiteral("The service runs."));
}

void Stop(Session& session) {
  const auto stores = session.store.OpenExisting();
  store::SystemConfig& system = stores->System();
  const qint16 state = system.GetServiceState();
  if (state == kStopped) return session.terminal.PrintLine(QStringLiteral("The service is stopped."));
  if (state != kStopping && !system.StopService())
    throw CommandError(QStringLiteral("No service runs that could be stopped from here."));
  if (!Becomes(system, kStopped, kLongestStopMs)) {
    throw CommandError(QStringLiteral("The service has not stopped yet."));
  }
  session.terminal.PrintLine(QStringLiteral("The service is stopped."));
}

}  // namespace

Command AddStart(CLI::App& app) {
  CLI::App* command = app.add_subcommand("start", "Start the monitoring service and wait until it runs");
  command->footer(
      "Starts the unit quarld.service where it is installed for this store, else a process of\n"
      "this user, whose messages stand beside the store in a file that ends in .service.log.");
  return {command, [](Session& session) { Start(session); }};
}

Command AddStop(CLI::App& app) {
  CLI::App* command = app.add_subcommand("stop", "Stop the monitoring service and wait until it has ended");
  command->footer("Checks that run are finished first. A service on another machine is not stopped from here.");
  return {command, [](Session& session) { Stop(session); }};
}

}  // namespace quarl::ctl
