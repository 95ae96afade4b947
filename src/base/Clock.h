#pragma once

#include <QtGlobal>

namespace quarl {

/// Source of the calendar time. Whoever needs the time takes one, so that tests can step it. Thread-safe.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since 1970-01-01T00:00:00Z.
  virtual qint64 NowMs() const = 0;
};

/// The machine's clock.
class SystemClock : public Clock {
 public:
  qint64 NowMs() const override;
};

}  // namespace quarl
