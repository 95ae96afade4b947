#include <QDateTime>
#include <array>

#include "apps/quarlctl/Commands.h"
#include "transfer/VisibleText.h"

namespace quarl::ctl {
namespace {

constexpr qint16 kRunning = 4;

QString WordOf(qint16 state) {
  static const std::array<const char*, 7> words = {"stopped",    "starting",           "stopping", "running",
                                                   "continuing", "about to be paused", "paused"};
  if (state == -1) return QStringLiteral("not installed");
  const bool known = state >= 1 && static_cast<std::size_t>(state) <= words.size();
  return known ? QLatin1String(words[static_cast<std::size_t>(state - 1)]) : QStringLiteral("in an unknown state");
}

QString LocalTime(qint64 ms) {
  return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

/// The states of all servers: passed, not run yet, failed.
std::array<int, 3> ServerStates(store::Stores& stores) {
  std::array<int, 3> counts{};
  for (auto rows = stores.Servers().GetAllServers(0); !rows.Eof(); rows.MoveNext()) {
    const int state = rows.Value("IDTestState").toInt();
    ++counts[state == 1 ? 0 : state == 3 ? 2 : 1];
  }
  return counts;
}

void Status(Session& session) {
  const auto stores = session.store.OpenExisting();
  const qint64 now = session.store.TheClock().NowMs();
  const auto instance = stores->Service().Instance();
  const qint16 state = stores->System().GetServiceState();
  Terminal& terminal = session.terminal;
  terminal.PrintLine(QStringLiteral("Service: ") + WordOf(state));
  if (instance && store::IsAlive(*instance, now)) {
    terminal.PrintLine(QStringLiteral("  process %1 on %2, since %3, last sign of life %4")
                           .arg(instance->process.pid)
                           .arg(transfer::VisibleText(instance->process.host), LocalTime(instance->startedMs),
                                LocalTime(instance->beatMs)));
  }
  const auto servers = ServerStates(*stores);
  terminal.PrintLine(
      QStringLiteral("Servers: %1 passed, %2 failed, %3 unknown").arg(servers[0]).arg(servers[2]).arg(servers[1]));
  session.exitCode = state == kRunning ? kDone : kFailed;
}

}  // namespace

Command AddStatus(CLI::App& app) {
  CLI::App* command = app.add_subcommand("status", "Show the state of the service and of the servers");
  command->footer("Exit codes: 0 the service runs, 1 it does not or the store cannot be read.");
  return {command, [](Session& session) { Status(session); }};
}

}  // namespace quarl::ctl
