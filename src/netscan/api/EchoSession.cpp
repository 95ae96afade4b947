#include "netscan/api/EchoSession.h"

#include <algorithm>

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;
constexpr auto kStopSeenWithin = 50ms;
constexpr auto kBusyPause = 2ms;
// Echoes to neighbours that do not exist fill the send buffer until the kernel gives the neighbours up, about 3 s.
constexpr auto kBusyLimit = 5s;
constexpr int kAnswersAtOnce = 4096;  // then the clock is looked at, however many foreign answers come in

}  // namespace

EchoSession::EchoSession(EchoChannel& channel, Now now) : channel_(channel), now_(std::move(now)) {}

EchoResult EchoSession::Ask(in_addr_t address, const EchoLimits& limits) {
  EchoResult only;
  AskAll({&address, 1}, limits, [&](std::size_t, const EchoResult& result) { only = result; });
  return only;
}

bool EchoSession::AskAll(std::span<const in_addr_t> addresses, const EchoLimits& limits, const Report& report,
                         const std::stop_token& stop) {
  Run run{addresses, limits, report, stop};
  run.limits.underWay = std::clamp(limits.underWay, std::size_t{1}, EchoLimits::kMaxUnderWay);
  while (run.next < addresses.size() || !run.underWay.empty()) {
    if (stop.stop_requested()) return false;
    SendMore(run);
    channel_.Wait(LongestWait(run));
    TakeAnswers(run);
    GiveUpOld(run);
  }
  return true;
}

std::uint16_t EchoSession::NextSequence(const Run& run) {
  const auto taken = [&](const UnderWay& echo) { return echo.sequence == sequence_; };
  while (std::any_of(run.underWay.begin(), run.underWay.end(), taken)) ++sequence_;
  return sequence_++;
}

void EchoSession::SendMore(Run& run) {
  while (run.next < run.addresses.size() && run.underWay.size() < run.limits.underWay) {
    const in_addr_t address = run.addresses[run.next];
    const std::uint16_t sequence = NextSequence(run);
    const auto now = now_();
    if (channel_.Send(sequence, address)) {
      run.underWay.push_back({sequence, address, run.next++, now});
      run.busySince = {};
      continue;
    }
    if (run.busySince == Clock::time_point{}) run.busySince = now;
    if (now - run.busySince < kBusyLimit) return;
    run.report(run.next++, {EchoStatus::NoResources, 0us});
    run.busySince = {};
  }
}

std::chrono::milliseconds EchoSession::LongestWait(const Run& run) const {
  if (run.busySince != Clock::time_point{}) return kBusyPause;
  if (run.underWay.empty()) return 0ms;
  const auto left = run.underWay.front().sent + run.limits.timeOut - now_();
  return std::clamp(std::chrono::ceil<std::chrono::milliseconds>(left), 0ms,
                    std::chrono::milliseconds(kStopSeenWithin));
}

void EchoSession::TakeAnswers(Run& run) {
  for (int count = 0; count < kAnswersAtOnce && !run.stop.stop_requested(); ++count) {
    const auto answer = channel_.Receive();
    if (!answer) return;
    const auto asked = std::find_if(run.underWay.begin(), run.underWay.end(), [&](const UnderWay& echo) {
      return echo.sequence == answer->sequence && AnswersFor(answer->address, echo.address);
    });
    if (asked == run.underWay.end()) continue;
    const UnderWay echo = *asked;
    run.underWay.erase(asked);
    run.report(echo.index, {answer->status, std::chrono::duration_cast<std::chrono::microseconds>(now_() - echo.sent)});
  }
}

void EchoSession::GiveUpOld(Run& run) {
  const auto now = now_();
  while (!run.underWay.empty() && now - run.underWay.front().sent >= run.limits.timeOut) {
    if (run.stop.stop_requested()) return;
    const UnderWay echo = run.underWay.front();
    run.underWay.erase(run.underWay.begin());
    run.report(echo.index, {EchoStatus::TimedOut, run.limits.timeOut});
  }
}

}  // namespace quarl::netscan
