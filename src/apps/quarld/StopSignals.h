#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace quarl::daemon {

/// SIGTERM and SIGINT as events of the event loop. Made before any other thread of the program.
class StopSignals {
 public:
  /// @param asked called for every signal that comes.
  explicit StopSignals(std::function<void()> asked);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  int descriptor_ = -1;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace quarl::daemon
