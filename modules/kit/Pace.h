#pragma once

#include <chrono>
#include <cstdint>

namespace quarl::kit {

/// Spreads the starts of programs, which are short and heavy: of many at once each costs more, and everything else
/// waits. However many come together, their starts lie evenly in one stretch of time; the first one's is at once. One
/// thread.
class Pace {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kStretch{40};

  /// How long the next program has to wait, less than kStretch.
  Clock::duration Next(Clock::time_point now) {
    if (now - begin_ >= kStretch) {
      begin_ = now;
      count_ = 0;
    }
    // The number's bits the other way round as a fraction: 0, 1/2, 1/4, 3/4, 1/8, ... fill a stretch evenly at any
    // length.
    std::uint32_t reversed = 0;
    for (std::uint32_t bit = 0; bit < kBits; ++bit) reversed |= ((count_ >> bit) & 1U) << (kBits - 1 - bit);
    ++count_;
    const Clock::time_point start = begin_ + Clock::duration(kStretch) * reversed / (std::int64_t{1} << kBits);
    return start > now ? start - now : Clock::duration(0);
  }

 private:
  static constexpr std::uint32_t kBits = 16;
  Clock::time_point begin_;
  std::uint32_t count_ = 0;  ///< programs of this stretch
};

}  // namespace quarl::kit
