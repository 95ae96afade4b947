#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

#include "netscan/api/Echo.h"
#include "netscan/api/HostSource.h"
#include "netscan/api/NameLookUp.h"

namespace quarl::netscan {

/// Where and how to look. A default one looks nowhere.
struct ScanSetup {
  std::vector<Subnet> subnets;
  std::vector<in_addr_t> own;  ///< addresses of this machine, which is never found
  ScanPorts ports;
  ScanBounds bounds;
  ScanLoop::Now now = &ScanLoop::Clock::now;
  /// Makes the way for echoes; null from it means that none can be sent, and then every address counts as answering.
  std::function<std::unique_ptr<EchoChannel>()> openEcho;
  /// Makes the sources of one scan. Called on the scan's thread.
  std::function<std::vector<std::unique_ptr<HostSource>>(const ScanSetup& setup)> makeSources;
  NameResolver resolver;  ///< asked only for what no source knows
  bool echoFound = true;  ///< ask each machine that was found, so that those that are silent become unlisted

  /// The networks of this machine, all sources, the echo of this user.
  static ScanSetup OfThisMachine();
};

/// One search for the machines of the local networks, on a thread of its own. Made and used by one thread; only the
/// scan's own thread calls `changed`. The destructor cancels and waits: about 100 ms, longer only while a helper
/// program for echoes is slow to start.
class HostScan {
 public:
  explicit HostScan(ScanSetup setup = ScanSetup::OfThisMachine());
  ~HostScan();
  HostScan(const HostScan&) = delete;
  HostScan& operator=(const HostScan&) = delete;

  /// Begins. Once only. Throws Error when no thread is to be had. @param changed called on the scan's thread whenever
  /// Progress() has changed, at most every 50 ms, and a last time after the end; a window hands it on with
  /// QMetaObject::invokeMethod(). May be empty.
  void Start(std::function<void()> changed = {});
  /// Returns at once; the scan ends soon after and keeps what it has found.
  void Cancel();
  /// A snapshot; never waits for the network.
  ScanProgress Progress() const;
  /// Waits for the end. At once when Progress().finished. Empty when it was never started.
  ScanResult Result();

 private:
  void Work(const std::stop_token& stop);
  void Publish(const ScanProgress& progress);

  ScanSetup setup_;
  std::function<void()> changed_;
  mutable std::mutex mutex_;
  ScanProgress progress_;  ///< guarded by mutex_
  ScanResult result_;      ///< written by the thread before its end
  std::jthread thread_;
};

}  // namespace quarl::netscan
