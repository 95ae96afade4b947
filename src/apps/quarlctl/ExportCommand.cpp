#include <memory>

#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/FileBytes.h"
#include "transfer/ConfigurationFile.h"
#include "transfer/Secrets.h"

namespace quarl::ctl {
namespace {

struct ExportOptions {
  std::string file = "-";
  bool force = false;
  bool withSecrets = false;
};

void WarnOfSecrets(const store::Configuration& configuration) {
  const int count = transfer::CountSecrets(configuration);
  if (count == 0) return;
  Terminal::Complain(
      QStringLiteral("Warning: this export holds passwords. Whoever can read it has them. Records with passwords: %1.")
          .arg(count));
}

void Export(Session& session, const ExportOptions& options) {
  store::ConfigurationSnapshot snapshot = session.store.OpenExisting()->Configurations().Read();
  if (!options.withSecrets) transfer::LeaveOutSecrets(snapshot.configuration);
  const QByteArray text = transfer::WriteConfiguration({snapshot.configuration, snapshot.storeId});
  if (options.file == "-") {
    session.terminal.Print(text);
  } else {
    WriteWholeFile(TextOf(options.file), text, options.force ? Existing::Replace : Existing::Keep);
  }
  if (options.withSecrets) WarnOfSecrets(snapshot.configuration);
}

}  // namespace

Command AddExport(CLI::App& app) {
  CLI::App* command = app.add_subcommand("export", "Write the whole configuration as JSON");
  auto options = std::make_shared<ExportOptions>();
  AddFile(*command, options->file, "The file to write; - or nothing is standard output");
  command->add_flag("--force", options->force, "Replace a file that exists");
  command->add_flag("--with-secrets", options->withSecrets, "Write the passwords of tests and alerts, too");
  command->footer(
      "The file holds groups, servers, tests, alerts, schedules and plug-in types, but no results and\n"
      "no log. Only you can read it (mode 0600). Passwords are left out; an import keeps those that\n"
      "the store has. A file for another store needs --with-secrets to take them along.\n"
      "\n"
      "Examples:\n"
      "  quarlctl export quarl.json\n"
      "  quarlctl export | gzip > quarl.json.gz");
  return {command, [options](Session& session) { Export(session, *options); }};
}

}  // namespace quarl::ctl
