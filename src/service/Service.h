#pragma once

#include <QTimeZone>
#include <functional>
#include <memory>
#include <optional>

#include "base/Clock.h"
#include "service/AlertSender.h"
#include "service/CheckRunner.h"
#include "service/Lateness.h"
#include "store/ServiceStore.h"

namespace quarl::service {

class ServiceLoop;

/// What a service works with. All borrowed; they outlive it.
struct ServiceParts {
  store::ServiceStore& store;
  CheckRunner& runner;
  AlertSender& sender;
  const Clock& clock;
};

struct ServiceOptions {
  QTimeZone zone = QTimeZone::systemTimeZone();  ///< in which start dates and times of schedules are meant
  int checkTimeLimitMs = 30'000;
  int alertTimeLimitMs = 60'000;
  /// Called when something has come in from outside a Step(), so that the next one is due at once.
  std::function<void()> wake;
  /// Told each problem of the service itself: one line, as it also goes into the store's log where that can be reached.
  std::function<void(const QString&)> problem;
};

struct ServiceFigures {
  std::size_t tests = 0;      ///< in the configuration
  std::size_t scheduled = 0;  ///< of them, with a schedule in force
  std::size_t inFlight = 0;
  quint64 started = 0;  ///< checks since the start
  quint64 skipped = 0;  ///< turns that came while the test still ran
  Lateness lateness;    ///< of starts against due times
};

/// The monitoring service without a process around it: scheduler, recorder, alerts and requests of one store. It has
/// no thread and no timer; whoever owns it calls Step() again and again. Everything on one thread.
class Service {
 public:
  Service(const ServiceParts& parts, ServiceOptions options);
  ~Service();
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  /// Claims the store and reads its configuration. Nothing: it runs. Otherwise the instance that has the store.
  /// Throws StoreError when the store cannot be used.
  [[nodiscard]] std::optional<store::ServiceInstance> Start();
  /// Does what is due now. A store that cannot be reached for a while is a problem told once, not an end.
  /// @return milliseconds after which it wants to be called again, 0 to a second.
  [[nodiscard]] qint64 Step();
  /// Begins to end: no further checks, messages or requests are begun. Step() goes on being called until Ended().
  /// @param graceMs for how long what runs may still take; then it is broken off.
  void Stop(int graceMs);
  /// Stopped with everything written and the store given up, or another instance has taken the store.
  [[nodiscard]] bool Ended() const;
  /// Another instance took the store while this one ran: it is to end with a failure.
  [[nodiscard]] bool LostStore() const;
  [[nodiscard]] ServiceFigures Figures() const;

 private:
  std::unique_ptr<ServiceLoop> loop_;
};

}  // namespace quarl::service
