#include "Verdict.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "kit/Performance.h"

namespace quarl::ping {
namespace {

using kit::State;
using netscan::EchoResult;
using netscan::EchoStatus;

struct Summary {
  std::size_t sent = 0;
  std::size_t answered = 0;
  double mean = std::numeric_limits<double>::quiet_NaN();  ///< milliseconds
  double lost = 100;                                       ///< percent
};

Summary Summarise(std::span<const EchoResult> echoes) {
  Summary summary{echoes.size()};
  double total = 0;
  for (const EchoResult& echo : echoes) {
    if (echo.status != EchoStatus::Answered) continue;
    ++summary.answered;
    total += static_cast<double>(echo.roundTrip.count()) / 1000;
  }
  const auto sent = static_cast<double>(summary.sent);
  const auto answered = static_cast<double>(summary.answered);
  if (summary.answered > 0) summary.mean = total / answered;
  summary.lost = 100 * (sent - answered) / sent;
  return summary;
}

/// Whether an echo could not be sent at all, which says nothing about the host.
bool IsLocal(const EchoResult& echo) {
  return echo.status == EchoStatus::NoResources || echo.status == EchoStatus::GeneralFailure;
}

std::string Reason(EchoStatus status, std::chrono::milliseconds timeOut) {
  switch (status) {
    case EchoStatus::TimedOut:
      return "no answer within " + std::to_string(timeOut.count()) + " ms";
    case EchoStatus::NetUnreachable:
      return "the network is unreachable";
    case EchoStatus::HostUnreachable:
      return "the host is unreachable";
    case EchoStatus::TtlExpiredInTransit:
    case EchoStatus::TtlExpiredInReassembly:
      return "the way to the host is too long";
    case EchoStatus::BadDestination:
      return "this is no address of a host";
    case EchoStatus::NoResources:
    case EchoStatus::GeneralFailure:
      return "this machine could not send";
    default:
      return "the network refuses echoes to this host";
  }
}

std::string Described(const Summary& summary) {
  char text[120];
  std::snprintf(text, sizeof text, "%zu of %zu echoes answered, mean round trip %.3g ms", summary.answered,
                summary.sent, summary.mean);
  return text;
}

std::string Figures(const Summary& summary, const Settings& settings) {
  kit::PerformanceData data;
  data.Add({.label = "rta",
            .value = summary.mean,
            .unit = "ms",
            .warning = settings.roundTrip.warning,
            .critical = settings.roundTrip.critical,
            .minimum = 0});
  data.Add({.label = "pl",
            .value = summary.lost,
            .unit = "%",
            .warning = settings.loss.warning,
            .critical = settings.loss.critical,
            .minimum = 0,
            .maximum = 100});
  return data.Text();
}

}  // namespace

kit::CheckOutcome JudgeEchoes(std::span<const EchoResult> echoes, const Settings& settings) {
  const Summary summary = Summarise(echoes);
  kit::CheckOutcome outcome{State::Passed, Described(summary), Figures(summary, settings)};
  if (summary.answered == 0) {
    const bool local = std::all_of(echoes.begin(), echoes.end(), IsLocal);
    outcome.state = local ? State::Unknown : State::Failed;
    outcome.text = "CRITICAL: none of " + std::to_string(summary.sent) + " echoes answered, " +
                   Reason(echoes.back().status, settings.timeOut);
    if (local) outcome = {State::Unknown, "No echo could be sent: this machine could not send."};
  } else if (summary.lost >= settings.loss.critical || summary.mean >= settings.roundTrip.critical) {
    outcome.state = State::Failed;
    outcome.text = "CRITICAL: " + outcome.text;
  } else if (summary.lost >= settings.loss.warning || summary.mean >= settings.roundTrip.warning) {
    outcome.state = settings.warningFails ? State::Failed : State::Passed;
    outcome.text = "WARNING: " + outcome.text;
  }
  return outcome;
}

}  // namespace quarl::ping
