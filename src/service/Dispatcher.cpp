#include "service/Dispatcher.h"

#include <algorithm>

#include "service/MessageText.h"

namespace quarl::service {
namespace {

QString Described(const store::ClaimedMessage& claimed) {
  return QStringLiteral("Alert \"%1\": \"%2\"").arg(OneLine(claimed.message.alertName), claimed.message.subject);
}

}  // namespace

Dispatcher::Dispatcher(store::ServiceStore& store, AlertSender& sender, const Clock& clock, DispatcherOptions options,
                       std::function<void()> wake)
    : store_(store), sender_(sender), clock_(clock), options_(options), wake_(std::move(wake)) {}

Dispatcher::~Dispatcher() {
  *alive_ = false;
}

qint64 Dispatcher::PauseMs(int attempts) const {
  const int doublings = std::clamp(attempts - 1, 0, 20);
  return std::min(options_.firstPauseMs << doublings, options_.longestPauseMs);
}

void Dispatcher::Step(const QString& instance, bool sendMore) {
  WriteOutcomes(instance);
  const int room = options_.atOnce - static_cast<int>(onTheWay_.size());
  if (!sendMore || room <= 0 || !nextMs_ || *nextMs_ > clock_.NowMs()) return;
  for (const store::ClaimedMessage& message : store_.ClaimMessages(instance, clock_.NowMs(), room)) Send(message);
  nextMs_ = store_.NextMessageMs();
}

void Dispatcher::Send(const store::ClaimedMessage& message) {
  onTheWay_.emplace(message.id, message);
  if (!message.module) {
    Arrived(message.id, {});
    return;
  }
  const AlertJob job{.idMessage = message.id,
                     .module = *message.module,
                     .serverName = message.message.serverName,
                     .serverAddress = message.message.address,
                     .subject = message.message.subject,
                     .text = message.message.text,
                     .thread = message.message.thread,
                     .recovery = message.message.recovery,
                     .groupName = message.message.groupName,
                     .testName = message.message.testName,
                     .resultText = message.message.resultText,
                     .timeMs = message.message.createdMs,
                     .sinceMs = message.message.outageSinceMs,
                     .properties = message.properties,
                     .timeLimitMs = options_.timeLimitMs};
  sender_.Send(job, [this, alive = alive_, id = message.id](const AlertOutcome& outcome) {
    if (*alive) Arrived(id, outcome);
  });
}

void Dispatcher::Arrived(qint64 idMessage, const AlertOutcome& outcome) {
  const auto at = onTheWay_.find(idMessage);
  if (at == onTheWay_.end()) return;
  outcomes_.push_back({std::move(at->second), outcome});
  onTheWay_.erase(at);
  if (wake_) wake_();
}

void Dispatcher::WriteOutcomes(const QString& instance) {
  while (!outcomes_.empty()) {
    Write(instance, outcomes_.front());
    outcomes_.pop_front();
    Look();
  }
}

void Dispatcher::Write(const QString& instance, const Outcome& outcome) {
  const store::ClaimedMessage& message = outcome.message;
  const qint64 nowMs = clock_.NowMs();
  const auto entry = [&](store::Severity severity, const QString& what) {
    return store::LogEntry{nowMs, severity, Described(message) + what};
  };
  // A false answer means that the store has another owner, or that the content of the store is another one: the
  // message is no more this service's business then.
  if (outcome.outcome.delivered) {
    std::ignore =
        store_.FinishMessage(instance, message.id, entry(store::Severity::Information, QStringLiteral(" delivered")));
    return;
  }
  if (!message.module) {
    std::ignore = store_.FinishMessage(
        instance, message.id, entry(store::Severity::Warning, QStringLiteral(" not delivered: the alert was removed")));
    return;
  }
  const QString reason = OneLine(outcome.outcome.reason);
  if (nowMs - message.message.createdMs >= options_.giveUpAfterMs) {
    std::ignore = store_.FinishMessage(
        instance, message.id,
        entry(store::Severity::Warning,
              QStringLiteral(" given up after %1 attempts: %2").arg(message.attempts).arg(reason)));
    return;
  }
  std::optional<store::LogEntry> first;
  if (message.attempts == 1) {
    first = entry(store::Severity::Warning, QStringLiteral(" not delivered, will be tried again: %1").arg(reason));
  }
  std::ignore = store_.PutBackMessage(instance, message.id, nowMs + PauseMs(message.attempts), first);
}

std::optional<qint64> Dispatcher::UntilNextMs() const {
  if (!outcomes_.empty()) return 0;
  if (!nextMs_ || static_cast<int>(onTheWay_.size()) >= options_.atOnce) return std::nullopt;
  return std::max<qint64>(0, *nextMs_ - clock_.NowMs());
}

void Dispatcher::Abort() {
  if (!onTheWay_.empty()) sender_.Abort();
  onTheWay_.clear();
}

}  // namespace quarl::service
