#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace quarl::netscan {

/// Waits for many descriptors and points in time on one thread. Handlers may watch, forget and set times.
class ScanLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Now = std::function<Clock::time_point()>;
  /// @param events what poll() says: POLLIN, POLLOUT, POLLERR, POLLHUP.
  using Ready = std::function<void(short events)>;

  explicit ScanLoop(Now now = &Clock::now);

  Clock::time_point Time() const { return now_(); }
  /// Replaces an earlier watch of the descriptor, which stays the caller's and is forgotten before it is closed.
  void Watch(int descriptor, short events, Ready ready);
  void Forget(int descriptor);
  void At(Clock::time_point when, std::function<void()> act);
  void After(Clock::duration time, std::function<void()> act) { At(Time() + time, std::move(act)); }
  /// Waits at most this time for something to happen and lets the handlers act on all of it.
  void Turn(std::chrono::milliseconds atMost);

 private:
  struct Watched {
    short events;
    Ready ready;
    std::uint64_t serial;  ///< tells a new watch from an old one of the same number
  };
  void ActOnTime();

  Now now_;
  std::map<int, Watched> watched_;
  std::multimap<Clock::time_point, std::function<void()>> timed_;
  std::uint64_t serial_ = 0;
};

}  // namespace quarl::netscan
