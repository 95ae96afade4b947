#pragma once

#include <QString>
#include <functional>

#include "store/ServiceRecords.h"

namespace quarl::service {

/// One run of a test. The module is called with its full path, which the runner makes from its own folders.
struct CheckJob {
  qint32 idTest = 0;
  QString module;  ///< file name in the folder of test modules; comes from the store, so it may be anything
  QString serverName;
  QString serverAddress;
  QString properties;  ///< for the module; may hold NUL characters
  int timeLimitMs = 0;
  bool urgent = false;  ///< somebody waits for it
};

struct CheckOutcome {
  /// Passed or Failed is the module's answer, or Failed where it did not end in time. NotRun: the check could
  /// not be made (no such module, no process to run it, a module that crashed); that is no failure of the server.
  store::TestState state = store::TestState::NotRun;
  QString text;         ///< one line for people; cut by the runner to a bounded length
  QString performance;  ///< performance data as monitoring plug-ins write it, may be empty
};

/// Runs tests outside this program. Everything happens on the thread of the service, and nothing here waits.
class CheckRunner {
 public:
  using Done = std::function<void(const CheckOutcome&)>;

  virtual ~CheckRunner() = default;
  /// True while another check can be started now. When it turns true again, the outcome that made the room has been
  /// told before.
  [[nodiscard]] virtual bool HasRoom() const = 0;
  /// Starts a check. done is called exactly once, from the event loop and never from within Start(); at the latest a
  /// second after the time limit, which begins when the module is called. Only called while HasRoom().
  virtual void Start(const CheckJob& job, Done done) = 0;
  /// Ends every check that still runs, with everything it started; their outcomes are not told any more.
  virtual void Abort() = 0;
};

}  // namespace quarl::service
