#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

#include "base/Clock.h"
#include "service/AlertSender.h"
#include "store/ServiceStore.h"

namespace quarl::service {

struct DispatcherOptions {
  int atOnce = 8;  ///< messages on their way at the same time
  int timeLimitMs = 60'000;
  qint64 firstPauseMs = 10'000;  ///< before the second attempt; doubled before each further one
  qint64 longestPauseMs = 15 * 60'000;
  qint64 giveUpAfterMs = 24 * 60 * 60'000;  ///< since the message was made; a last attempt is made after that
};

/// Sends what is in the outbox, tries again what could not be delivered, and gives up after a day. A message is sent
/// again only when its attempt failed or nobody knows how it ended, because the program died within it.
class Dispatcher {
 public:
  /// @param wake called when an outcome has come in, so that Step() writes it.
  Dispatcher(store::ServiceStore& store, AlertSender& sender, const Clock& clock, DispatcherOptions options,
             std::function<void()> wake);
  ~Dispatcher();
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;

  /// Writes outcomes that have come in and sends what is due. Throws StoreError; outcomes are kept then.
  /// @param sendMore false: what is due stays in the outbox.
  void Step(const QString& instance, bool sendMore);
  /// There may be new messages.
  void Look() { nextMs_ = 0; }
  /// Nothing is on its way and no outcome waits to be written.
  bool IsIdle() const { return onTheWay_.empty() && outcomes_.empty(); }
  /// Milliseconds until Step() has something to do, 0 when it has; nothing: as far as is known never.
  std::optional<qint64> UntilNextMs() const;
  /// For how long a message rests after so many attempts.
  qint64 PauseMs(int attempts) const;
  /// Breaks off what is on its way; its outcomes stay unknown.
  void Abort();

 private:
  struct Outcome {
    store::ClaimedMessage message;
    AlertOutcome outcome;
  };
  void Send(const store::ClaimedMessage& message);
  void WriteOutcomes(const QString& instance);
  void Write(const QString& instance, const Outcome& outcome);
  void Arrived(qint64 idMessage, const AlertOutcome& outcome);

  store::ServiceStore& store_;
  AlertSender& sender_;
  const Clock& clock_;
  DispatcherOptions options_;
  std::function<void()> wake_;
  std::unordered_map<qint64, store::ClaimedMessage> onTheWay_;
  std::deque<Outcome> outcomes_;
  std::optional<qint64> nextMs_ = 0;  // when the outbox has something due; nothing: never
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace quarl::service
