#include "service/ServiceLoop.h"

#include <QUuid>
#include <algorithm>
#include <tuple>

#include "store/StoreError.h"

namespace quarl::service {
namespace {

constexpr qint64 kLookMs = 100;
constexpr qint64 kPlanPauseMs = 1'000;  // while the configuration is being changed, it is not read all the time
constexpr qint64 kPlanShare = 10;       // and reading it takes no more than a tenth of the time
constexpr qint64 kRetryMs = 1'000;
constexpr qint64 kLongestRestMs = 1'000;
constexpr qint64 kEndWriteMs = 5'000;  // for what is still to be written when the grace is over
constexpr int kStartsAStep = 500;

constexpr qint16 kStartPending = 2;
constexpr qint16 kStopPending = 3;
constexpr qint16 kRunning = 4;

}  // namespace

ServiceLoop::ServiceLoop(const ServiceParts& parts, ServiceOptions options)
    : with_(parts),
      options_(std::move(options)),
      policy_(options_.zone),
      plan_(std::make_unique<PlanIndex>()),
      scheduler_(parts.clock, options_.zone),
      recorder_(parts.store, policy_, parts.clock),
      dispatcher_(parts.store, parts.sender, parts.clock, {.timeLimitMs = options_.alertTimeLimitMs}, options_.wake) {}

ServiceLoop::~ServiceLoop() {
  *alive_ = false;
  if (phase_ == Phase::Running || phase_ == Phase::Ending) AbortAll();
}

std::optional<store::ServiceInstance> ServiceLoop::Start() {
  const qint64 nowMs = with_.clock.NowMs();
  instance_ = {.id = QUuid::createUuid().toString(QUuid::WithoutBraces),
               .process = ProcessIdentity::Current(),
               .startedMs = nowMs,
               .beatMs = nowMs,
               .state = kStartPending};
  std::optional<store::ServiceInstance> other = with_.store.Claim(instance_, nowMs + dispatcher_.PauseMs(1));
  if (other) return other;
  try {
    ReadStates();
    phase_ = Phase::Running;
    Beat();
  } catch (const store::StoreError&) {
    phase_ = Phase::New;
    try {
      with_.store.Release(instance_.id);
    } catch (const store::StoreError&) {
      // The signs of life that do not come say it too.
    }
    throw;
  }
  return std::nullopt;
}

template <typename Body>
void ServiceLoop::WithStore(Body&& body) {
  if (storeFails_ && with_.clock.SteadyMs() < retryStoreMs_) return;
  try {
    body();
    if (std::exchange(storeFails_, false)) Problem(QStringLiteral("The store can be used again."));
  } catch (const store::StoreError& error) {
    retryStoreMs_ = with_.clock.SteadyMs() + kRetryMs;
    if (!std::exchange(storeFails_, true)) Problem(error.Description());
  }
}

qint64 ServiceLoop::Step() {
  if (phase_ == Phase::New || phase_ == Phase::Ended) return kLongestRestMs;
  WithStore([this] { LookAround(); });
  if (phase_ == Phase::Running) StartChecks();
  if (phase_ != Phase::Ended) WithStore([this] { Write(); });
  if (phase_ == Phase::Ending) End();
  return UntilNextMs();
}

void ServiceLoop::LookAround() {
  const qint64 steadyMs = with_.clock.SteadyMs();
  if (steadyMs >= nextBeatMs_) Beat();
  if (reread_) ReadStates();
  if (phase_ != Phase::Running || steadyMs < nextLookMs_) return;
  FollowNews();
  nextLookMs_ = steadyMs + kLookMs;
}

void ServiceLoop::Beat() {
  const qint16 state = phase_ == Phase::Running ? kRunning : kStopPending;
  if (!with_.store.Beat(instance_.id, with_.clock.NowMs(), state)) Reclaim();
  nextBeatMs_ = with_.clock.SteadyMs() + store::kBeatIntervalMs;
}

void ServiceLoop::Reclaim() {
  instance_.beatMs = with_.clock.NowMs();
  instance_.state = phase_ == Phase::Running ? kRunning : kStopPending;
  const auto other = with_.store.Claim(instance_, instance_.beatMs + dispatcher_.PauseMs(1));
  if (!other) {
    dispatcher_.Abort();
    reread_ = true;
    return;
  }
  Problem(QStringLiteral("Another service (process %1 on %2) has taken the store.")
              .arg(other->process.pid)
              .arg(other->process.host));
  lost_ = true;
  AbortAll();
  phase_ = Phase::Ended;
}

void ServiceLoop::FollowNews() {
  const store::ServiceNews news = with_.store.News();
  demands_.Keep(news.requests);
  const store::Plan& plan = plan_->All();
  if (news.storeId != plan.storeId) {
    ReadStates();
  } else if (news.revision != plan.revision && (!news.requests.empty() || with_.clock.SteadyMs() >= nextPlanMs_)) {
    ReadPlan();
  }
  TakeRequests(news.requests);
}

void ServiceLoop::TakeRequests(const std::vector<store::CheckRequest>& requests) {
  std::vector<qint32> tests;
  for (const store::CheckRequest& request : requests) {
    if (!demands_.Take(request, *plan_, tests)) continue;
    if (tests.empty()) recorder_.Answer(request.id);
    for (const qint32 id : tests) scheduler_.Demand(id);
  }
}

void ServiceLoop::ReadStates() {
  recorder_.Load(with_.store.ReadStates());
  ReadPlan();
  reread_ = false;
}

void ServiceLoop::ReadPlan() {
  const qint64 beganMs = with_.clock.SteadyMs();
  auto plan = std::make_unique<PlanIndex>(with_.store.ReadPlan());
  for (const QString& fault : scheduler_.SetPlan(*plan)) Problem(fault);
  recorder_.SetPlan(*plan);
  Answer(demands_.Done(*plan));
  plan_ = std::move(plan);
  const qint64 endedMs = with_.clock.SteadyMs();
  nextPlanMs_ = endedMs + std::max(kPlanPauseMs, kPlanShare * (endedMs - beganMs));
}

void ServiceLoop::StartChecks() {
  for (int started = 0; started < kStartsAStep && with_.runner.HasRoom(); ++started) {
    const std::optional<Scheduler::Turn> turn = scheduler_.Take();
    if (!turn) break;
    StartCheck(*turn);
  }
  full_ = !with_.runner.HasRoom();
}

void ServiceLoop::StartCheck(const Scheduler::Turn& turn) {
  const store::PlannedTest* test = plan_->Test(turn.idTest);
  const store::PlannedServer* server = test ? plan_->Server(test->idServer) : nullptr;
  if (!server) {
    std::ignore = scheduler_.Finished(turn.idTest);
    return;
  }
  if (turn.demanded) demands_.Begun(turn.idTest);
  const CheckJob job{.idTest = test->id,
                     .module = test->module,
                     .serverName = server->name,
                     .serverAddress = server->address,
                     .properties = test->properties,
                     .timeLimitMs = options_.checkTimeLimitMs,
                     .urgent = turn.demanded};
  with_.runner.Start(job, [this, alive = alive_, turn](const CheckOutcome& outcome) {
    if (*alive) Arrived(turn, outcome);
  });
}

void ServiceLoop::Arrived(const Scheduler::Turn& turn, const CheckOutcome& outcome) {
  if (phase_ == Phase::Ended) return;
  const bool demandedAgain = scheduler_.Finished(turn.idTest);
  recorder_.Add(turn.idTest, outcome);
  if (turn.demanded) Answer(demands_.Done(turn.idTest));
  // Any other outcome waits for the next step, which writes it with what else has come.
  const bool toWrite = !storeFails_ && recorder_.UntilFlushMs() == 0;
  const bool awaited = turn.demanded || demandedAgain || full_ || phase_ == Phase::Ending || toWrite;
  if (awaited && options_.wake) options_.wake();
}

void ServiceLoop::Answer(const std::vector<qint64>& requests) {
  for (const qint64 id : requests) recorder_.Answer(id);
}

void ServiceLoop::Write() {
  const std::optional<qint64> untilFlush = recorder_.UntilFlushMs();
  if (untilFlush && *untilFlush == 0 && !recorder_.Flush(instance_.id)) {
    Reclaim();  // what was not written belongs to a content that is no more
    return;
  }
  if (recorder_.TakeHasMessages()) dispatcher_.Look();
  dispatcher_.Step(instance_.id, phase_ == Phase::Running);
}

void ServiceLoop::Stop(int graceMs) {
  if (phase_ != Phase::Running) return;
  phase_ = Phase::Ending;
  endByMs_ = with_.clock.SteadyMs() + graceMs;
  nextBeatMs_ = 0;  // others are told at once
}

void ServiceLoop::End() {
  const qint64 steadyMs = with_.clock.SteadyMs();
  const bool idle = scheduler_.Running() == 0 && dispatcher_.IsIdle();
  if (!idle && steadyMs < endByMs_) return;
  if (!idle) AbortAll();
  WithStore([this] {
    dispatcher_.Step(instance_.id, false);
    if (recorder_.Flush(instance_.id)) with_.store.Release(instance_.id);
    phase_ = Phase::Ended;
  });
  if (steadyMs >= endByMs_ + kEndWriteMs) phase_ = Phase::Ended;
}

void ServiceLoop::AbortAll() {
  if (scheduler_.Running() > 0) with_.runner.Abort();
  dispatcher_.Abort();
}

void ServiceLoop::Problem(const QString& text) {
  if (options_.problem) options_.problem(text);
  recorder_.Log(store::Severity::Warning, text);
}

qint64 ServiceLoop::UntilNextMs() {
  if (phase_ == Phase::Ended) return 0;
  const qint64 steadyMs = with_.clock.SteadyMs();
  qint64 rest = kLongestRestMs;
  const auto bound = [&rest](std::optional<qint64> ms) { rest = ms ? std::min(rest, std::max<qint64>(0, *ms)) : rest; };
  if (phase_ == Phase::Running && with_.runner.HasRoom()) bound(scheduler_.UntilNextMs());
  if (phase_ == Phase::Ending) bound(endByMs_ > steadyMs ? endByMs_ - steadyMs : kLookMs);
  if (storeFails_) {
    bound(retryStoreMs_ - steadyMs);
  } else {
    bound(nextLookMs_ > steadyMs ? nextLookMs_ - steadyMs : kLookMs);
    bound(nextBeatMs_ - steadyMs);
    bound(recorder_.UntilFlushMs());
    bound(dispatcher_.UntilNextMs());
  }
  return rest;
}

ServiceFigures ServiceLoop::Figures() const {
  return {.tests = scheduler_.Tests(),
          .scheduled = scheduler_.Scheduled(),
          .inFlight = scheduler_.Running(),
          .started = scheduler_.Started(),
          .skipped = scheduler_.Skipped(),
          .lateness = scheduler_.Late()};
}

}  // namespace quarl::service
