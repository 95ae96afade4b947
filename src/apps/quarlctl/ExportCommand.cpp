#include <memory>

#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/WholeFile.h"
#include "transfer/ConfigurationFile.h"

namespace quarl::ctl {
namespace {

struct ExportOptions {
  std::string file = "-";
  bool force = false;
};

void Export(Session& session, const ExportOptions& options) {
  const store::ConfigurationSnapshot snapshot = session.store.OpenExisting()->Configurations().Read();
  const QByteArray text = transfer::WriteConfiguration({snapshot.configuration, snapshot.storeId});
  if (options.file == "-") {
    session.terminal.Print(text);
  } else {
    WriteWholeFile(TextOf(options.file), text, options.force ? Existing::Replace : Existing::Keep);
  }
}

}  // namespace

Command AddExport(CLI::App& app) {
  CLI::App* command = app.add_subcommand("export", "Write the whole configuration as JSON");
  auto options = std::make_shared<ExportOptions>();
  AddFile(*command, options->file, "The file to write; - or nothing is standard output");
  command->add_flag("--force", options->force, "Replace a file that exists");
  command->footer(
      "The file holds groups, servers, tests, alerts, schedules and plug-in types, but no results and\n"
      "no log. Properties may hold passwords, so only you can read it (mode 0600).\n"
      "\n"
      "Examples:\n"
      "  quarlctl export quarl.json\n"
      "  quarlctl export | gzip > quarl.json.gz");
  return {command, [options](Session& session) { Export(session, *options); }};
}

}  // namespace quarl::ctl
