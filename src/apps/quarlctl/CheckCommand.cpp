#include <memory>
#include <optional>
#include <vector>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"
#include "transfer/VisibleText.h"

namespace quarl::ctl {
namespace {

struct CheckOptions {
  std::string name;
  bool last = false;
};

/// What NAME stands for: the whole store, one group or one server.
struct Target {
  std::optional<qint32> idGroup;
  std::optional<qint32> idServer;
};

struct Tally {
  int passed = 0;
  int unknown = 0;
  QStringList failures;

  int ExitCode() const {
    return !failures.isEmpty() ? kCheckFailed : unknown > 0 || passed == 0 ? kCheckUnknown : kDone;
  }
};

qint32 Id(const store::RecordSet& rows, std::string_view field) {
  return static_cast<qint32>(rows.Value(field).toLongLong());
}

QString TextIn(const store::RecordSet& rows, std::string_view field) {
  return rows.Value(field).toString();
}

/// The records of a set that bear a name. A number after "#" is an id.
std::vector<qint32> Named(store::RecordSet rows, const char* idField, const char* nameField, const QString& name) {
  std::vector<qint32> found;
  bool isId = false;
  const qint32 wanted = name.startsWith(u'#') ? name.mid(1).toInt(&isId) : 0;
  for (; !rows.Eof(); rows.MoveNext()) {
    const qint32 id = Id(rows, idField);
    if (isId ? id == wanted : TextIn(rows, nameField) == name) found.push_back(id);
  }
  return found;
}

Target TargetOf(store::Stores& stores, const QString& name) {
  if (name == QLatin1String("*")) return {0, std::nullopt};
  const auto servers = Named(stores.Servers().GetAllServers(0), "IDServer", "ServerName", name);
  const auto groups = Named(stores.Groups().GetGroups(0), "IDGroup", "GroupName", name);
  if (servers.size() + groups.size() > 1) {
    throw CommandError(QStringLiteral("Several servers or groups are called \"%1\"; name one by #ID.").arg(name));
  }
  if (!servers.empty()) return {std::nullopt, servers.front()};
  if (!groups.empty()) return {groups.front(), std::nullopt};
  throw CommandError(QStringLiteral("There is no server or group \"%1\".").arg(name));
}

void RunNow(store::Stores& stores, const Target& target) {
  const bool done =
      target.idServer ? stores.Servers().CheckServer(*target.idServer) : stores.Groups().CheckGroup(*target.idGroup);
  if (!done) {
    throw CommandError(QStringLiteral("The tests were not run: no service serves this store, or it did not answer."));
  }
}

void CountServer(store::Stores& stores, qint32 idServer, const QString& server, Tally& tally) {
  for (auto rows = stores.Tests().GetTestsByServer(idServer); !rows.Eof(); rows.MoveNext()) {
    switch (rows.Value("IDTestState").toInt()) {
      case 1:
        ++tally.passed;
        break;
      case 3:
        tally.failures +=
            QStringLiteral("%1, %2: %3").arg(server, TextIn(rows, "TestName"), TextIn(rows, "LastResult"));
        break;
      default:
        ++tally.unknown;
    }
  }
}

Tally Count(store::Stores& stores, const Target& target) {
  Tally tally;
  if (target.idServer) {
    const auto server = stores.Servers().GetServer(*target.idServer);
    if (server) CountServer(stores, *target.idServer, server->name, tally);
    return tally;
  }
  for (auto rows = *target.idGroup == 0 ? stores.Servers().GetAllServers(0)
                                        : stores.Servers().GetServersByGroup(*target.idGroup);
       !rows.Eof(); rows.MoveNext()) {
    CountServer(stores, Id(rows, "IDServer"), TextIn(rows, "ServerName"), tally);
  }
  return tally;
}

/// One line as monitoring plug-ins print it, then one for each failed test.
QString Report(const QString& name, const Tally& tally) {
  const int code = tally.ExitCode();
  const QString word = code == kDone          ? QStringLiteral("OK")
                       : code == kCheckFailed ? QStringLiteral("CRITICAL")
                                              : QStringLiteral("UNKNOWN");
  const auto failed = tally.failures.size();
  QString text = QStringLiteral("%1 - %2: %3 passed, %4 failed, %5 unknown | passed=%3 failed=%4 unknown=%5\n")
                     .arg(word, transfer::VisibleText(name))
                     .arg(tally.passed)
                     .arg(failed)
                     .arg(tally.unknown);
  for (const QString& failure : tally.failures) text += transfer::VisibleText(failure) + u'\n';
  return text;
}

void Check(Session& session, const CheckOptions& options) {
  const QString name = TextOf(options.name);
  try {
    const auto stores = session.store.OpenExisting();
    const Target target = TargetOf(*stores, name);
    if (!options.last) RunNow(*stores, target);
    const Tally tally = Count(*stores, target);
    session.terminal.Print(Report(name, tally).toUtf8());
    session.exitCode = tally.ExitCode();
  } catch (const Error& error) {
    session.terminal.PrintLine(QStringLiteral("UNKNOWN - ") + transfer::VisibleText(error.Description()));
    session.exitCode = kCheckUnknown;
  }
}

}  // namespace

Command AddCheck(CLI::App& app) {
  CLI::App* command = app.add_subcommand("check", "Run tests now and tell how they ended");
  auto options = std::make_shared<CheckOptions>();
  command->add_option("NAME", options->name, "A server, a group, #ID of either, or * for all")->required();
  command->add_flag("--last", options->last, "Run nothing, tell the states that the store has");
  command->footer(
      "Asks the running service and waits up to ten seconds. The first line has the form of\n"
      "monitoring plug-ins; exit codes: 0 all passed, 2 at least one failed, 3 unknown.\n"
      "\n"
      "Examples:\n"
      "  quarlctl check www1\n"
      "  quarlctl check --last '*'");
  return {command, [options](Session& session) { Check(session, *options); }};
}

}  // namespace quarl::ctl
