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
  Begin({addresses.begin(), addresses.end()}, limits, report, stop);
  for (;;) {
    const auto wait = Step();
    if (Finished()) return true;
    if (stop.stop_requested()) return false;
    channel_.Wait(wait);
  }
}

void EchoSession::Begin(std::vector<in_addr_t> addresses, const EchoLimits& limits, Report report,
                        std::stop_token stop) {
  run_ = Run{std::move(addresses), limits, std::move(report), std::move(stop)};
  run_.limits.underWay = std::clamp(limits.underWay, std::size_t{1}, EchoLimits::kMaxUnderWay);
}

std::chrono::milliseconds EchoSession::Step() {
  TakeAnswers();
  GiveUpOld();
  if (!run_.stop.stop_requested()) SendMore();
  return LongestWait();
}

std::uint16_t EchoSession::NextSequence() {
  const auto taken = [&](const UnderWay& echo) { return echo.sequence == sequence_; };
  while (std::any_of(run_.underWay.begin(), run_.underWay.end(), taken)) ++sequence_;
  return sequence_++;
}

void EchoSession::SendMore() {
  while (run_.next < run_.addresses.size() && run_.underWay.size() < run_.limits.underWay) {
    const in_addr_t address = run_.addresses[run_.next];
    const std::uint16_t sequence = NextSequence();
    const auto now = now_();
    if (channel_.Send(sequence, address)) {
      run_.underWay.push_back({sequence, address, run_.next++, now});
      run_.busySince = {};
      continue;
    }
    if (run_.busySince == Clock::time_point{}) run_.busySince = now;
    if (now - run_.busySince < kBusyLimit) return;
    run_.report(run_.next++, {EchoStatus::NoResources, 0us});
    run_.busySince = {};
  }
}

std::chrono::milliseconds EchoSession::LongestWait() const {
  if (run_.busySince != Clock::time_point{}) return kBusyPause;
  if (run_.underWay.empty()) return 0ms;
  const auto left = run_.underWay.front().sent + run_.limits.timeOut - now_();
  return std::clamp(std::chrono::ceil<std::chrono::milliseconds>(left), 0ms,
                    std::chrono::milliseconds(kStopSeenWithin));
}

void EchoSession::TakeAnswers() {
  for (int count = 0; count < kAnswersAtOnce && !run_.stop.stop_requested(); ++count) {
    const auto answer = channel_.Receive();
    if (!answer) return;
    const auto asked = std::find_if(run_.underWay.begin(), run_.underWay.end(), [&](const UnderWay& echo) {
      return echo.sequence == answer->sequence && AnswersFor(answer->address, echo.address);
    });
    if (asked == run_.underWay.end()) continue;
    const UnderWay echo = *asked;
    run_.underWay.erase(asked);
    run_.report(echo.index,
                {answer->status, std::chrono::duration_cast<std::chrono::microseconds>(now_() - echo.sent)});
  }
}

void EchoSession::GiveUpOld() {
  const auto now = now_();
  while (!run_.underWay.empty() && now - run_.underWay.front().sent >= run_.limits.timeOut) {
    if (run_.stop.stop_requested()) return;
    const UnderWay echo = run_.underWay.front();
    run_.underWay.erase(run_.underWay.begin());
    run_.report(echo.index, {EchoStatus::TimedOut, run_.limits.timeOut});
  }
}

}  // namespace quarl::netscan
