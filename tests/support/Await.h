#pragma once

#include <QElapsedTimer>
#include <QThread>

namespace quarl::testing {

/// Whether a condition holds within ten seconds; it is looked at every few milliseconds.
template <typename Condition>
bool Await(Condition condition) {
  QElapsedTimer limit;
  for (limit.start(); limit.elapsed() < 10'000; QThread::msleep(5)) {
    if (condition()) return true;
  }
  return false;
}

}  // namespace quarl::testing
