#pragma once

#include <algorithm>
#include <chrono>

namespace quarl::netscan {

/// How fast echoes may leave through the helper program: a full window at once, then one every two milliseconds.
/// The helper enforces it; its caller keeps to it, so that no echo waits inside the helper.
class EchoPace {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr int kBurst = 254;
  static constexpr std::chrono::milliseconds kInterval{2};

  explicit EchoPace(Clock::time_point now) : full_(now) {}
  /// Time until the next echo may leave; zero when it may leave now.
  Clock::duration Until(Clock::time_point now) const { return std::max(Clock::duration::zero(), Next() - now); }
  /// Counts one echo; only after Until() gave zero.
  void Take(Clock::time_point now) { full_ = std::max(full_, now) + kInterval; }

 private:
  Clock::time_point Next() const { return full_ - (kBurst - 1) * kInterval; }
  Clock::time_point full_;  ///< when a whole burst may leave again
};

}  // namespace quarl::netscan
