#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QDir>
#include <csignal>
#include <cstdlib>
#include <tuple>

#include "apps/quarld/Daemon.h"
#include "apps/quarld/ServiceOutput.h"
#include "store/StoreLocation.h"

namespace {

using quarl::daemon::Priority;
using quarl::daemon::ServiceOutput;

constexpr int kFailed = 1;
constexpr int kUsage = 2;

struct Arguments {
  std::string store;
  bool storeGiven = false;
  bool foreground = false;
  int checkLimit = 30;
  int stopGrace = 20;
  int messagesLimit = 0;
};

void ReportQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtDebugMsg) ServiceOutput::Say(type == QtInfoMsg ? Priority::Info : Priority::Warning, text);
}

int Serve(const Arguments& arguments) {
  try {
    const auto location = arguments.storeGiven ? quarl::store::StoreLocation::Parse(
                                                     QString::fromStdString(arguments.store), QDir::currentPath())
                                               : quarl::store::StoreLocation::FromEnvironment();
    ServiceOutput::Begin({location.Text(), arguments.foreground, qint64{arguments.messagesLimit} * 1024});
    quarl::daemon::Daemon daemon({location, arguments.checkLimit * 1000, arguments.stopGrace * 1000});
    if (!daemon.Begin()) return kFailed;
    QCoreApplication::exec();
    return daemon.ExitCode();
  } catch (const quarl::Error& error) {
    ServiceOutput::Say(Priority::Error, error.Description());
    return kFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::ignore = setenv("LC_ALL", "C.UTF-8", 1);  // the same texts, in UTF-8, whoever starts it
  std::ignore = std::signal(SIGPIPE, SIG_IGN);
  qInstallMessageHandler(ReportQtMessage);
  CLI::App app{"The Quarl monitoring service: runs the tests of a store and raises its alerts.", "quarld"};
  app.set_version_flag("--version", "quarld " QUARL_VERSION, "Print the version");
  Arguments arguments;
  CLI::Option* store = app.add_option("--store", arguments.store, "The store, as sqlite:PATH");
  store->type_name("LOCATION");
  app.add_flag("--foreground", arguments.foreground, "Write messages to the terminal, not to the journal");
  app.add_option("--check-limit", arguments.checkLimit, "Seconds that a check may take at most")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  app.add_option("--stop-grace", arguments.stopGrace, "Seconds that running checks may take when the service stops")
      ->check(CLI::Range(0, 3600))
      ->capture_default_str();
  app.add_option("--messages-limit", arguments.messagesLimit,
                 "Kilobytes after which the file that messages are redirected to is begun anew; 0: it grows")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.footer(
      "Without --store the store is $QUARL_STORE, else the one that /etc/quarl/store.conf\n"
      "names, else quarl/quarl.db in your data folder.\n"
      "SIGTERM ends the service when the running checks have ended.\n"
      "Exit codes: 0 stopped when asked, 1 failed, 2 wrong arguments.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& fault) {
    return app.exit(fault) == 0 ? 0 : kUsage;
  }
  arguments.storeGiven = store->count() > 0;
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("quarld"));
  return Serve(arguments);
}
