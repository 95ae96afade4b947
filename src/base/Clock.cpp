#include "base/Clock.h"

#include <QDateTime>

namespace quarl {

qint64 SystemClock::NowMs() const {
  return QDateTime::currentMSecsSinceEpoch();
}

}  // namespace quarl
