#include "apps/quarlctl/CommandLine.h"

#include <QFile>
#include <array>
#include <optional>
#include <sstream>

#include "apps/quarlctl/CommandError.h"
#include "apps/quarlctl/Commands.h"

namespace quarl::ctl {
namespace {

constexpr const char* kFooter =
    "Without --store the store is $QUARL_STORE, else the one that /etc/quarl/store.conf\n"
    "names, else quarl/quarl.db in your data folder.\n"
    "\n"
    "Examples:\n"
    "  quarlctl init --starter\n"
    "  quarlctl --store sqlite:/srv/quarl.db list servers\n"
    "  quarlctl export before.json && quarlctl import changed.json --dry-run\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong arguments. What fails changes nothing.\n"
    "\"quarlctl COMMAND --help\" tells more about a command.";

/// The arguments as CLI11 reads them, with the store option that every command takes.
class Arguments {
 public:
  Arguments();
  void Parse(int argc, char** argv) { app_.parse(argc, argv); }
  /// Nothing when the option was not given; given and empty is no location.
  std::optional<std::string> Store() const { return storeOption_->count() > 0 ? std::optional(store_) : std::nullopt; }
  const Command& Chosen() const;
  /// "check" was chosen, whose exit codes are others.
  bool AsksForCheck() const { return app_.got_subcommand("check"); }
  /// What is wrong with the arguments.
  QString Fault(const CLI::ParseError& fault) const;
  /// What --help and --version print.
  QByteArray Text(const CLI::ParseError& request) const;

 private:
  CLI::App app_{"Sets up, saves and shows the store of the Quarl server monitor.", "quarlctl"};
  std::string store_;
  CLI::Option* storeOption_ = nullptr;  // the app's
  std::array<Command, 11> commands_;
};

Arguments::Arguments() {
  app_.set_version_flag("--version", "quarlctl " QUARL_VERSION, "Print the version");
  storeOption_ = app_.add_option("--store", store_, "The store, as sqlite:PATH");
  storeOption_->type_name("LOCATION");
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.footer(kFooter);
  app_.get_formatter()->column_width(28);
  commands_ = {AddInit(app_),   AddExport(app_), AddImport(app_), AddBackup(app_), AddRestore(app_), AddList(app_),
               AddStatus(app_), AddStart(app_),  AddStop(app_),   AddCheck(app_),  AddSet(app_)};
}

const Command& Arguments::Chosen() const {
  for (const Command& command : commands_) {
    if (command.app->parsed()) return command;
  }
  throw CommandError(QStringLiteral("No command was given."));
}

QString Arguments::Fault(const CLI::ParseError& fault) const {
  const std::vector<std::string> unknown = app_.remaining();
  const bool noCommand = fault.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
  if (!noCommand || !app_.get_subcommands().empty()) return QString::fromStdString(fault.what());
  if (unknown.empty()) return QStringLiteral("No command was given.");
  return QStringLiteral("There is no command \"%1\".").arg(QString::fromStdString(unknown.front()));
}

QByteArray Arguments::Text(const CLI::ParseError& request) const {
  std::ostringstream out;
  std::ostringstream err;
  std::ignore = app_.exit(request, out, err);
  return QByteArray::fromStdString(out.str());
}

int Failed(const QString& text) {
  Terminal::Complain(text);
  return kFailed;
}

int RunChosen(const Arguments& arguments) {
  Session session;
  if (const auto store = arguments.Store()) session.store.SetLocation(TextOf(*store));
  arguments.Chosen().run(session);
  session.terminal.Flush();
  return session.exitCode;
}

int ParseAndRun(int argc, char** argv) {
  Arguments arguments;
  try {
    arguments.Parse(argc, argv);
  } catch (const CLI::ParseError& fault) {
    if (fault.get_exit_code() == 0) {
      Terminal terminal;
      terminal.Print(arguments.Text(fault));
      terminal.Flush();
      return kDone;
    }
    Terminal::Complain(arguments.Fault(fault));
    Terminal::Complain(QStringLiteral("\"quarlctl --help\" tells how it is called."));
    return arguments.AsksForCheck() ? kCheckUnknown : kUsage;
  }
  return RunChosen(arguments);
}

}  // namespace

CLI::Option* AddFile(CLI::App& command, std::string& file, const std::string& description) {
  return command.add_option("FILE", file, description)->check([](const std::string& name) {
    return name.empty() ? std::string("the name is empty") : std::string();
  });
}

QString TextOf(const std::string& argument) {
  QString text = QString::fromStdString(argument);
  if (text.toStdString() != argument) {
    throw CommandError(QStringLiteral("The argument %1 is not UTF-8.").arg(text));
  }
  return text;
}

int RunCommandLine(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const Error& error) {
    return Failed(error.Description());
  } catch (const std::bad_alloc&) {
    return Failed(QStringLiteral("There is not enough memory."));
  }
}

}  // namespace quarl::ctl
