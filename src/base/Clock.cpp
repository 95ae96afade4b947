#include "base/Clock.h"

#include <time.h>

#include <QDateTime>

namespace quarl {

qint64 SystemClock::NowMs() const {
  return QDateTime::currentMSecsSinceEpoch();
}

qint64 SystemClock::SteadyMs() const {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace quarl
