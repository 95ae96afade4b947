#include <QDir>
#include <memory>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/ModuleCheck.h"

namespace quarl::ctl {
namespace {

struct RestoreOptions {
  std::string file;
  bool yes = false;
};

void Restore(Session& session, const RestoreOptions& options) {
  const QString backup = QDir().absoluteFilePath(TextOf(options.file));
  const store::StoreLocation location = session.store.Location();
  const bool replaces = session.store.Exists();
  if (replaces && !options.yes &&
      !Terminal::Confirm(
          QStringLiteral("Everything in the store %1 is replaced by %2. Go on?").arg(location.path, backup))) {
    throw CommandError(QStringLiteral("Not restored."));
  }
  const store::SqlSetup setup = session.store.Setup(location);
  store::SqlStores::Restore(setup, backup);
  session.terminal.PrintLine(QStringLiteral("Restored the store %1 from %2.").arg(location.path, backup));
  const auto snapshot = session.store.OpenExisting()->Configurations().Read();
  for (const QString& fault : ModuleFaults(snapshot.configuration, session.store.Paths())) Terminal::Complain(fault);
}

}  // namespace

Command AddRestore(CLI::App& app) {
  CLI::App* command = app.add_subcommand("restore", "Give the store the content of a backup");
  auto options = std::make_shared<RestoreOptions>();
  AddFile(*command, options->file, "A file that \"quarlctl backup\" wrote")->required();
  command->add_flag("--yes", options->yes, "Replace the store without asking");
  command->footer(
      "The backup is checked first; one that is damaged, no store or of a newer version changes\n"
      "nothing. Programs that use the store see the old or the new content.\n"
      "\n"
      "Examples:\n"
      "  quarlctl restore /var/backups/quarl.db\n"
      "  quarlctl restore --yes nightly.db");
  return {command, [options](Session& session) { Restore(session, *options); }};
}

}  // namespace quarl::ctl
