#include <QDir>
#include <memory>

#include "apps/quarlctl/Commands.h"

namespace quarl::ctl {
namespace {

struct BackupOptions {
  std::string file;
  bool force = false;
};

void Backup(Session& session, const BackupOptions& options) {
  const QString path = QDir().absoluteFilePath(TextOf(options.file));
  const auto existing = options.force ? store::SqlStores::Existing::Replace : store::SqlStores::Existing::Keep;
  session.store.OpenExisting()->Backup(path, existing);
  session.terminal.PrintLine(QStringLiteral("Saved the store to %1.").arg(path));
}

}  // namespace

Command AddBackup(CLI::App& app) {
  CLI::App* command = app.add_subcommand("backup", "Copy the store to a file while it may be in use");
  auto options = std::make_shared<BackupOptions>();
  AddFile(*command, options->file, "The file to write")->required();
  command->add_flag("--force", options->force, "Replace a file that exists");
  command->footer(
      "The copy holds everything, results and log included, and is checked before it gets its name.\n"
      "\n"
      "Examples:\n"
      "  quarlctl backup /var/backups/quarl.db\n"
      "  quarlctl backup --force nightly.db");
  return {command, [options](Session& session) { Backup(session, *options); }};
}

}  // namespace quarl::ctl
