#include "service/Lateness.h"

#include <algorithm>
#include <cmath>

namespace quarl::service {
namespace {

constexpr double kGrowth = 1.5;

template <std::size_t count>
std::array<qint64, count> Bounds() {
  std::array<qint64, count> bounds;
  for (std::size_t place = 0; place < count; ++place) {
    bounds[place] = static_cast<qint64>(std::ceil(std::pow(kGrowth, static_cast<double>(place))));
  }
  return bounds;
}

const auto kBounds = Bounds<Lateness::kClasses>();

}  // namespace

void Lateness::Count(qint64 ms) {
  const auto bound = std::upper_bound(kBounds.begin(), kBounds.end() - 1, ms);
  ++classes_[static_cast<std::size_t>(bound - kBounds.begin())];
  ++starts_;
  maxMs_ = std::max(maxMs_, ms);
}

qint64 Lateness::ShareBelowMs(double share) const {
  const auto wanted = static_cast<quint64>(std::ceil(share * static_cast<double>(starts_)));
  quint64 seen = 0;
  for (std::size_t place = 0; place < classes_.size(); ++place) {
    seen += classes_[place];
    if (seen >= wanted && seen > 0) return std::min(kBounds[place], maxMs_ + 1);
  }
  return 0;
}

}  // namespace quarl::service
