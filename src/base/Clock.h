#pragma once

#include <QtGlobal>

namespace quarl {

/// Source of the time. Whoever needs the time takes one, so that tests can step it. Thread-safe.
class Clock {
 public:
  virtual ~Clock() = default;
  /// The calendar time in milliseconds since 1970-01-01T00:00:00Z. It may be set, forward and back.
  virtual qint64 NowMs() const = 0;
  /// Milliseconds since some moment of the past. It never goes back and goes on while the machine sleeps: waiting is
  /// counted by it. A clock without one of its own gives the calendar time.
  virtual qint64 SteadyMs() const { return NowMs(); }
};

/// The machine's clocks.
class SystemClock : public Clock {
 public:
  qint64 NowMs() const override;
  qint64 SteadyMs() const override;
};

}  // namespace quarl
