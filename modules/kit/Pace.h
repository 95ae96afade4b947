#pragma once

#include <chrono>
#include <cstdint>

namespace quarl::kit {

/// Spreads the starts of programs that come in a burst: programs are short and heavy, and of many at once each costs
/// more. The first few start at once; however many follow, their starts lie evenly in one stretch of time. One thread.
class Pace {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kStretch{40};
  static constexpr std::uint32_t kAtOnce = 4;
  /// Without a program for so long, a burst is over.
  static constexpr std::chrono::milliseconds kGap{2};

  /// How long the next program has to wait, less than kStretch.
  Clock::duration Next(Clock::time_point now) {
    if (now - last_ >= kGap) {
      begin_ = now;
      count_ = 0;
    }
    last_ = now;
    const std::uint32_t number = count_++;
    if (number < kAtOnce) return Clock::duration(0);
    const Clock::time_point start = begin_ + Clock::duration(kStretch) * Reversed(number) / (std::int64_t{1} << kBits);
    return start > now ? start - now : Clock::duration(0);
  }

 private:
  static constexpr std::uint32_t kBits = 16;

  /// The bits of a number the other way round: as fractions 0, 1/2, 1/4, 3/4, 1/8, ... they fill a stretch evenly at
  /// any length.
  static std::uint32_t Reversed(std::uint32_t number) {
    std::uint32_t reversed = 0;
    for (std::uint32_t bit = 0; bit < kBits; ++bit) reversed |= ((number >> bit) & 1U) << (kBits - 1 - bit);
    return reversed;
  }

  Clock::time_point begin_, last_;
  std::uint32_t count_ = 0;  ///< programs of this burst
};

}  // namespace quarl::kit
