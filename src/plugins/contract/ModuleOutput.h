#pragma once

#include <QLoggingCategory>
#include <QString>
#include <string>

namespace quarl::plugins {

/// What modules say besides their answers: category "quarl.modules".
Q_DECLARE_LOGGING_CATEGORY(moduleLog)

/// Passes to the log what one module writes and logs, line by line with the module's name, up to a bound; the rest is
/// dropped. Control characters come out as spaces.
class ModuleOutput {
 public:
  explicit ModuleOutput(QString module) : module_(std::move(module)) {}
  /// The last line, if it did not end, and how much was dropped.
  ~ModuleOutput();
  ModuleOutput(const ModuleOutput&) = delete;
  ModuleOutput& operator=(const ModuleOutput&) = delete;

  /// Reads what stands in a pipe that does not block. False when no more will come.
  bool ReadFrom(int descriptor);
  /// A line of the module for the log: 1 information, 2 warning, 3 error.
  void Log(int severity, const std::string& line);

 private:
  void Add(const char* bytes, std::size_t size);

  QString module_;
  std::string line_;
  std::size_t logged_ = 0, dropped_ = 0;
};

}  // namespace quarl::plugins
