#include <algorithm>
#include <memory>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"
#include "apps/quarlctl/FileBytes.h"
#include "apps/quarlctl/ModuleCheck.h"
#include "transfer/ConfigurationDiff.h"
#include "transfer/ConfigurationMerge.h"
#include "transfer/Secrets.h"
#include "transfer/TransferError.h"

namespace quarl::ctl {
namespace {

using store::ConfigurationSnapshot;

struct ImportOptions {
  std::string file;
  bool dryRun = false;
  bool replace = false;
  bool allowMissingModules = false;
};

transfer::ConfigurationFile ReadFile(const QString& path) {
  const bool isInput = path == QLatin1String("-");
  const QByteArray text =
      isInput ? Terminal::ReadInput(transfer::kLargestFile) : ReadWholeFile(path, transfer::kLargestFile);
  try {
    return transfer::ReadConfiguration(text);
  } catch (const transfer::TransferError& error) {
    throw CommandError((isInput ? QStringLiteral("Standard input") : path) + QStringLiteral(": ") +
                       error.Description());
  }
}

std::vector<store::TypeConfiguration> NewTypes(const std::vector<store::TypeConfiguration>& before,
                                               const std::vector<store::TypeConfiguration>& after) {
  std::vector<store::TypeConfiguration> added;
  for (const store::TypeConfiguration& type : after) {
    const bool known =
        std::any_of(before.begin(), before.end(), [&](const auto& other) { return other.module == type.module; });
    if (!known) added.push_back(type);
  }
  return added;
}

/// Looks for the modules of the types that the store does not have yet.
void CheckModules(const store::Configuration& before, const store::Configuration& after, const Session& session,
                  bool allowed) {
  store::Configuration added;
  added.testTypes = NewTypes(before.testTypes, after.testTypes);
  added.alertTypes = NewTypes(before.alertTypes, after.alertTypes);
  const QStringList faults = ModuleFaults(added, session.store.Paths());
  for (const QString& fault : faults) Terminal::Complain(fault);
  if (!faults.isEmpty() && !allowed) {
    throw CommandError(
        QStringLiteral("With such a type the console shows no tree, so nothing was imported; "
                       "--allow-missing-modules imports it nevertheless."));
  }
}

/// @param secretless how many tests and alerts come without their passwords.
void PrintPlan(Terminal& terminal, const transfer::ConfigurationDiff& diff, int secretless, bool dryRun) {
  for (const QString& line : diff.lines) terminal.PrintLine(line);
  const QString counts =
      QStringLiteral("%1 added, %2 changed, %3 removed")
          .arg(QString::number(diff.added), QString::number(diff.changed), QString::number(diff.removed));
  terminal.PrintLine(dryRun ? QStringLiteral("Nothing was written; the import would make: %1.").arg(counts)
                            : QStringLiteral("Imported: %1.").arg(counts));
  if (secretless == 0) return;
  terminal.PrintLine(
      QStringLiteral("Records that the file leaves without passwords, to be entered again: %1.").arg(secretless));
}

/// The plan as it was printed; nothing is written when the store is as the file wants it.
struct Plan {
  store::Configuration configuration;
  bool changes = false;
};

Plan MakePlan(Session& session, const transfer::ConfigurationFile& file, const ConfigurationSnapshot& target,
              const ImportOptions& options) {
  Plan plan;
  const auto mode = options.replace ? transfer::ImportMode::Replace : transfer::ImportMode::Merge;
  try {
    plan.configuration = transfer::PlanImport(file, target, mode);
  } catch (const transfer::TransferError& error) {
    throw CommandError(error.Description() +
                       QStringLiteral(" --replace makes this store hold what the file holds and nothing else."));
  }
  const bool foreign = !file.storeId.isEmpty() && file.storeId != target.storeId;
  const int secretless =
      transfer::RestoreSecrets(plan.configuration, foreign ? store::Configuration() : target.configuration);
  CheckModules(target.configuration, plan.configuration, session, options.allowMissingModules);
  const auto diff = transfer::CompareConfigurations(target.configuration, plan.configuration);
  PrintPlan(session.terminal, diff, secretless, options.dryRun);
  plan.changes = !diff.lines.isEmpty();
  return plan;
}

void ImportInto(store::ConfigurationStore& store, Session& session, const transfer::ConfigurationFile& file,
                const ImportOptions& options) {
  const ConfigurationSnapshot target = store.Read();
  const Plan plan = MakePlan(session, file, target, options);
  const bool adopts = !file.storeId.isEmpty() && file.storeId != target.storeId;
  if (options.dryRun || (!plan.changes && !adopts)) return;
  store.Write(plan.configuration, target.revision, file.storeId);
}

void Import(Session& session, const ImportOptions& options) {
  const transfer::ConfigurationFile file = ReadFile(TextOf(options.file));
  if (session.store.Exists()) {
    ImportInto(session.store.OpenExisting()->Configurations(), session, file, options);
  } else if (options.dryRun) {
    std::ignore = MakePlan(session, file, {}, options);
  } else {
    NewStore store(session.store);
    ImportInto(store.Stores().Configurations(), session, file, options);
    store.Keep();
  }
}

}  // namespace

Command AddImport(CLI::App& app) {
  CLI::App* command = app.add_subcommand("import", "Bring a configuration from a JSON file into the store");
  auto options = std::make_shared<ImportOptions>();
  AddFile(*command, options->file, "A file of \"quarlctl export\" or one written by hand; - is standard input")
      ->required();
  command->add_flag("--dry-run", options->dryRun, "Only print what would change");
  command->add_flag("--replace", options->replace, "Remove from the store what the file does not hold");
  command->add_flag("--allow-missing-modules", options->allowMissingModules,
                    "Import types whose module is not in its plug-in folder");
  command->footer(
      "Records with an id that the store has are changed, others are added; nothing is removed\n"
      "without --replace. A file of another store needs --replace, unless this store is empty.\n"
      "A store that does not exist is made. An import is done whole or not at all.\n"
      "\n"
      "Examples:\n"
      "  quarlctl import new-servers.json --dry-run\n"
      "  quarlctl --store sqlite:/srv/copy.db import quarl.json\n"
      "  quarlctl import --replace quarl.json");
  return {command, [options](Session& session) { Import(session, *options); }};
}

}  // namespace quarl::ctl
