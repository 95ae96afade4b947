#include "service/MessageText.h"

#include <QDateTime>
#include <cstdlib>

namespace quarl::service {
namespace {

QString TestsFailed(int count) {
  return count == 1 ? QStringLiteral("1 test failed") : QStringLiteral("%1 tests failed").arg(count);
}

QString Remainder(const StateChange& change) {
  if (change.failedTests == 0) return QStringLiteral("no test of it counts as failed");
  return TestsFailed(change.failedTests);
}

}  // namespace

QString OneLine(const QString& text) {
  QString line = text;
  for (QChar& c : line) {
    if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) c = u' ';
  }
  return line.simplified();
}

QString MomentText(qint64 ms, const QTimeZone& zone) {
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(ms, zone);
  const int minutes = time.offsetFromUtc() / 60;
  return QStringLiteral("%1 %2%3:%4")
      .arg(time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")))
      .arg(QLatin1Char(minutes < 0 ? '-' : '+'))
      .arg(std::abs(minutes) / 60, 2, 10, QLatin1Char('0'))
      .arg(std::abs(minutes) % 60, 2, 10, QLatin1Char('0'));
}

QString SubjectOf(const StateChange& change) {
  const QString server = OneLine(change.server->name);
  if (!change.test) return QStringLiteral("RECOVERY %1: its failed tests are no more").arg(server);
  const QString test = OneLine(change.test->name);
  if (change.failed && change.serverChanged) return QStringLiteral("PROBLEM %1: %2 failed").arg(server, test);
  if (change.failed) return QStringLiteral("PROBLEM %1: %2 failed too").arg(server, test);
  if (change.serverChanged) return QStringLiteral("RECOVERY %1: %2 passed").arg(server, test);
  return QStringLiteral("RECOVERY %1: %2 passed, %3").arg(server, test, TestsFailed(change.failedTests));
}

QString TextOf(const StateChange& change, const PlanIndex& plan, const QTimeZone& zone) {
  const auto line = [](const char* name, const QString& value) {
    return QStringLiteral("%1 %2\n").arg(QLatin1String(name), -9).arg(value);
  };
  const store::PlannedServer& server = *change.server;
  QString text = line("Server:", OneLine(server.name)) + line("Address:", OneLine(server.address));
  const store::PlannedGroup* group = plan.Group(server.idGroup);
  if (group && group->id != 0) text += line("Group:", OneLine(group->name));
  if (change.test) {
    text += line("Test:", OneLine(change.test->name));
    text += line("State:", !change.failed         ? QStringLiteral("passed")
                           : change.failures == 1 ? QStringLiteral("failed")
                                                  : QStringLiteral("failed %1 times in a row").arg(change.failures));
    text += line("Result:", OneLine(change.text));
  }
  text += line("Time:", MomentText(change.timeMs, zone));
  const QString since = MomentText(change.sinceMs, zone);
  const bool serverFailed = change.failedTests > 0;
  text += QStringLiteral("\nThe server %1 as failed since %2; now %3.\n")
              .arg(serverFailed ? QStringLiteral("counts") : QStringLiteral("counted"), since, Remainder(change));
  return text;
}

QString ThreadOf(const QString& storeId, const StateChange& change) {
  QString store = storeId;
  store.removeIf([](QChar c) { return c.unicode() > 127 || !(c.isLetterOrNumber() || c == u'-'); });
  return QStringLiteral("quarl-%1-%2-%3").arg(store).arg(change.server->id).arg(change.sinceMs);
}

QString LogLineOf(const StateChange& change) {
  const QString server = QStringLiteral("%1 (%2)").arg(OneLine(change.server->name), OneLine(change.server->address));
  if (!change.test) return QStringLiteral("%1: server recovered, its failed tests are no more").arg(server);
  QString line =
      QStringLiteral("%1: %2 %3: %4")
          .arg(server, OneLine(change.test->name),
               change.failed ? QStringLiteral("failed") : QStringLiteral("passed again"), OneLine(change.text));
  if (change.serverChanged) {
    line += change.failed ? QStringLiteral(" (server failed)") : QStringLiteral(" (server recovered)");
  }
  return line;
}

}  // namespace quarl::service
