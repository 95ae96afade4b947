#pragma once

#include <algorithm>
#include <chrono>

namespace quarl::kit {

/// The moment at which something has to be done, on the steady clock.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param limit negative counts as zero, more than a day as a day.
  explicit Deadline(std::chrono::milliseconds limit)
      : end_(Clock::now() + std::clamp<std::chrono::milliseconds>(limit, std::chrono::milliseconds{0}, kLongest)) {}

  /// Time that is left, rounded up to whole milliseconds, never negative; what poll() wants.
  std::chrono::milliseconds Left() const {
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()), std::chrono::milliseconds{0});
  }
  int PollTime() const { return static_cast<int>(Left().count()); }
  bool IsOver() const { return Clock::now() >= end_; }

 private:
  static constexpr std::chrono::hours kLongest{24};
  Clock::time_point end_;
};

}  // namespace quarl::kit
