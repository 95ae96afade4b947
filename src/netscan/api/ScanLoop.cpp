#include "netscan/api/ScanLoop.h"

#include <poll.h>

#include <algorithm>

namespace quarl::netscan {

ScanLoop::ScanLoop(Now now) : now_(std::move(now)) {}

void ScanLoop::Watch(int descriptor, short events, Ready ready) {
  watched_[descriptor] = {events, std::move(ready), ++serial_};
}

void ScanLoop::Forget(int descriptor) {
  watched_.erase(descriptor);
}

void ScanLoop::At(Clock::time_point when, std::function<void()> act) {
  timed_.emplace(when, std::move(act));
}

void ScanLoop::ActOnTime() {
  const auto now = Time();
  while (!timed_.empty() && timed_.begin()->first <= now) {
    const auto act = std::move(timed_.begin()->second);
    timed_.erase(timed_.begin());
    act();
  }
}

void ScanLoop::Turn(std::chrono::milliseconds atMost) {
  using std::chrono::milliseconds;
  if (!timed_.empty())
    atMost = std::clamp(std::chrono::ceil<milliseconds>(timed_.begin()->first - Time()), milliseconds(0), atMost);
  std::vector<pollfd> wanted;
  std::vector<std::uint64_t> serials;
  for (const auto& [descriptor, watch] : watched_) {
    wanted.push_back({descriptor, watch.events, 0});
    serials.push_back(watch.serial);
  }
  const int ready = poll(wanted.data(), wanted.size(), static_cast<int>(atMost.count()));
  for (std::size_t index = 0; ready > 0 && index < wanted.size(); ++index) {
    if (wanted[index].revents == 0) continue;
    const auto found = watched_.find(wanted[index].fd);
    if (found == watched_.end() || found->second.serial != serials[index]) continue;
    const Ready act = found->second.ready;  // a copy: it may forget itself
    act(wanted[index].revents);
  }
  ActOnTime();
}

}  // namespace quarl::netscan
