#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

#include "apps/quarlctl/StoreAccess.h"
#include "apps/quarlctl/Terminal.h"

namespace quarl::ctl {

// Exit codes. Those of "check" are the monitoring plug-ins'.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;
inline constexpr int kCheckFailed = 2;
inline constexpr int kCheckUnknown = 3;

/// What a command works with.
struct Session {
  StoreAccess store;
  Terminal terminal;
  int exitCode = kDone;  ///< of a command that did not throw
};

/// A subcommand and what it does when it was chosen. Running one throws Error when it fails; what it printed is then
/// not shown.
struct Command {
  CLI::App* app = nullptr;
  std::function<void(Session&)> run;
};

Command AddInit(CLI::App& app);
Command AddExport(CLI::App& app);
Command AddImport(CLI::App& app);
Command AddBackup(CLI::App& app);
Command AddRestore(CLI::App& app);
Command AddList(CLI::App& app);
Command AddStatus(CLI::App& app);
Command AddStart(CLI::App& app);
Command AddStop(CLI::App& app);
Command AddCheck(CLI::App& app);
Command AddSet(CLI::App& app);

/// An option for the name of a file; an empty name, as a script with an unset variable gives it, is a wrong argument.
CLI::Option* AddFile(CLI::App& command, std::string& file, const std::string& description);

/// A text from the command line. Throws CommandError when it is not UTF-8, which no QString can hold.
QString TextOf(const std::string& argument);

}  // namespace quarl::ctl
