#include "netscan/api/HostScan.h"

#include <system_error>

#include "base/Error.h"
#include "netscan/api/HostSources.h"
#include "netscan/api/ScanRun.h"

namespace quarl::netscan {

ScanSetup ScanSetup::OfThisMachine() {
  ScanSetup setup;
  setup.subnets = AttachedSubnets();
  setup.own = OwnAddresses();
  setup.openEcho = [] { return OpenEchoChannel(); };
  setup.makeSources = [](const ScanSetup& own) {
    std::vector<std::unique_ptr<HostSource>> sources;
    sources.push_back(MakePingSweep(own));
    sources.push_back(MakeNetBiosSource());
    sources.push_back(MakeMdnsSource());
    sources.push_back(MakeWsDiscoverySource());
    sources.push_back(MakeAnnouncementSource());
    sources.push_back(MakeNeighbourSource());
    sources.push_back(MakeSmbSource());
    return sources;
  };
  return setup;
}

HostScan::HostScan(ScanSetup setup) : setup_(std::move(setup)) {}

HostScan::~HostScan() {
  Cancel();
}

void HostScan::Start(std::function<void()> changed) {
  changed_ = std::move(changed);
  try {
    thread_ = std::jthread([this](const std::stop_token& stop) { Work(stop); });
  } catch (const std::system_error& error) {
    throw Error(QStringLiteral("The search cannot begin: %1.").arg(QString::fromLocal8Bit(error.what())));
  }
}

void HostScan::Cancel() {
  thread_.request_stop();
}

ScanProgress HostScan::Progress() const {
  const std::lock_guard lock(mutex_);
  return progress_;
}

ScanResult HostScan::Result() {
  if (thread_.joinable()) thread_.join();
  return result_;
}

void HostScan::Publish(const ScanProgress& progress) {
  {
    const std::lock_guard lock(mutex_);
    if (progress == progress_) return;
    progress_ = progress;
  }
  if (changed_) changed_();
}

void HostScan::Work(const std::stop_token& stop) {
  ScanRun run(setup_, stop, [this](const ScanProgress& progress) { Publish(progress); });
  result_ = run.Run();
  ScanProgress end = run.Progress();
  end.finished = true;
  Publish(end);
}

}  // namespace quarl::netscan
