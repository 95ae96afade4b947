#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <vector>

#include "netscan/api/HostScan.h"

namespace quarl::netscan {

/// Runs searches for a window, one at a time, without ever making it wait. User-interface thread; the listener is
/// called there. The destructor waits for the threads to end, see HostScan.
class ScanRunner : public QObject {
 public:
  struct Listener {
    std::function<void(const ScanProgress&)> progress;
    std::function<void(const ScanResult&)> finished;
  };

  ScanRunner(std::function<ScanSetup()> makeSetup, Listener listener);

  /// Begins anew; one that is running is given up. Throws Error.
  void Start();
  /// Ends the search early: the listener gets what it has found soon after.
  void Stop();
  /// Gives the search up: the listener hears nothing more of it.
  void GiveUp();
  bool Running() const { return current_ != nullptr; }

 private:
  void Changed(const HostScan* scan);

  std::function<ScanSetup()> makeSetup_;
  Listener listener_;
  HostScan* current_ = nullptr;                   ///< in scans_
  std::vector<std::unique_ptr<HostScan>> scans_;  ///< the current one, and those that are about to end
};

}  // namespace quarl::netscan
