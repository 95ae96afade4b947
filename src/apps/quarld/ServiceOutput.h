#pragma once

#include <QString>

namespace quarl::daemon {

enum class Priority { Error = 3, Warning = 4, Notice = 5, Info = 6 };

/// Where the service's own messages go: to the journal with fields (QUARL_STORE, PRIORITY) where the standard error
/// stream leads there, else to the standard error stream, one line each. Any thread.
class ServiceOutput {
 public:
  struct Setup {
    QString store;
    bool forceStream = false;  ///< writes to the stream even when the journal is there
    qint64 limit = 0;          ///< bytes; a file that the stream leads to is begun anew beyond it. 0: it grows
  };
  static void Begin(const Setup& setup);
  static void Say(Priority priority, const QString& line);
};

}  // namespace quarl::daemon
