#include "store/ServiceRecords.h"

#include <cstdlib>

namespace quarl::store {

bool IsAlive(const ServiceInstance& instance, qint64 nowMs) {
  return std::llabs(nowMs - instance.beatMs) <= kBeatFreshMs && !instance.process.IsGone();
}

}  // namespace quarl::store
