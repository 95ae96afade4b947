#include "netscan/ScanRunner.h"

#include <algorithm>

namespace quarl::netscan {

ScanRunner::ScanRunner(std::function<ScanSetup()> makeSetup, Listener listener)
    : makeSetup_(std::move(makeSetup)), listener_(std::move(listener)) {}

void ScanRunner::Start() {
  GiveUp();
  auto made = std::make_unique<HostScan>(makeSetup_());
  HostScan* scan = made.get();
  scan->Start([this, scan] {
    QMetaObject::invokeMethod(
        this, [this, scan] { Changed(scan); }, Qt::QueuedConnection);
  });
  scans_.push_back(std::move(made));
  current_ = scan;
}

void ScanRunner::Stop() {
  if (current_ != nullptr) current_->Cancel();
}

void ScanRunner::GiveUp() {
  Stop();
  current_ = nullptr;
}

void ScanRunner::Changed(const HostScan* scan) {
  const auto place = std::find_if(scans_.begin(), scans_.end(), [scan](const auto& own) { return own.get() == scan; });
  if (place == scans_.end()) return;
  const ScanProgress progress = (*place)->Progress();
  const bool heard = scan == current_;
  if (!progress.finished) {
    if (heard) listener_.progress(progress);
    return;
  }
  const std::unique_ptr<HostScan> ended = std::move(*place);
  scans_.erase(place);
  if (!heard) return;
  current_ = nullptr;
  listener_.finished(ended->Result());
}

}  // namespace quarl::netscan
