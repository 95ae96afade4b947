#include "kit/TestModule.h"

#include <cinttypes>
#include <cstdio>
#include <memory>
#include <tuple>
#include <utility>

#include "kit/Buffers.h"
#include "kit/PropertiesCache.h"
#include "kit/PropertyDialog.h"
#include "kit/Text.h"

namespace quarl::kit {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kTrialLimit{60};
constexpr std::size_t kMostRoom = std::size_t{64} * 1024;

const char* NameOf(State state) {
  switch (state) {
    case State::Passed:
      return "Passed";
    case State::Failed:
      return "Failed";
    case State::Unknown:
      break;
  }
  return "Unknown";
}

/// What a check came to; what it threw is its text.
template <typename Get>
CheckOutcome Settled(Clock::time_point begin, const Get& get) {
  CheckOutcome outcome;
  try {
    outcome = get();
  } catch (const std::exception& error) {
    outcome.text = error.what();
  }
  if (outcome.duration.count() < 0)
    outcome.duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
  if (outcome.text.empty()) outcome.text = NameOf(outcome.state);
  return outcome;
}

CheckOutcome Measured(const TestModule& module, const Server& server, const Properties& properties,
                      std::chrono::milliseconds limit) {
  return Settled(Clock::now(), [&] { return module.Check(server, properties, limit); });
}

Attempt Tried(const TestModule& module, const Server& server, const Properties& properties) {
  const CheckOutcome outcome = Measured(module, server, properties, kTrialLimit);
  char duration[40];
  std::ignore =
      std::snprintf(duration, sizeof duration, " (%.1f ms)", static_cast<double>(outcome.duration.count()) / 1000);
  std::string report = NameOf(outcome.state) + std::string(duration) + "\n" + OneLine(outcome.text);
  if (!outcome.performance.empty()) report.append("\n").append(OneLine(outcome.performance));
  return {outcome.state == State::Passed, report};
}

/// Whole figures only: a figure that was cut would be another one.
std::string_view FittingFigures(std::string_view figures, std::size_t room) {
  if (figures.size() < room) return figures;
  const std::size_t blank = figures.rfind(' ', room - 1);
  return figures.substr(0, blank == std::string_view::npos ? 0 : blank);
}

int16_t Give(const CheckOutcome& outcome, QuarlCheckResult& result) {
  WriteText(result.text, OneLine(outcome.text, std::min<std::size_t>(result.text.size, kMostRoom) - 1));
  WriteText(result.performance, FittingFigures(outcome.performance, result.performance.size));
  result.duration = outcome.duration.count();
  return static_cast<int16_t>(outcome.state);
}

Judge JudgeOf(const TestModule& module) {
  return [&module](const Properties& properties, std::string& key) { return module.Judge(properties, key); };
}

using ReadyPointer = std::shared_ptr<const ReadyProperties>;

ReadyPointer ReadyFor(const TestModule& module, const QuarlCheckRequest& request) {
  static auto& cache = *new PropertiesCache;  // never destroyed: a check may outlast the end of main()
  return cache.Get(TextOf(request.properties), module.Fields(), JudgeOf(module));
}

CheckOutcome Unusable(const ReadyProperties& ready) {
  return {State::Unknown, "Settings: " + ready.trouble, {}, {}};
}

Server ServerOf(const QuarlCheckRequest& request) {
  return {std::string(TextOf(request.serverName)), std::string(TextOf(request.serverAddress))};
}

CheckOutcome Check(const TestModule& module, const QuarlCheckRequest& request) {
  const ReadyPointer ready = ReadyFor(module, request);
  if (!ready->trouble.empty()) return Unusable(*ready);
  return Measured(module, ServerOf(request), ready->properties, std::chrono::milliseconds(request.timeLimit));
}

/// A check on its way, with all that it refers to.
class SteppedCheck {
 public:
  SteppedCheck(const SteppedTestModule& module, const QuarlCheckRequest& request, ReadyPointer ready)
      : ready_(std::move(ready)),
        server_(ServerOf(request)),
        steps_(module.Begin(server_, ready_->properties, std::chrono::milliseconds(request.timeLimit))) {}

  bool Go(short came) { return steps_.Go(came); }
  const Wait& Waiting() const { return steps_.Waiting(); }
  CheckOutcome Outcome() {
    return Settled(begin_, [this] { return steps_.Result(); });
  }

 private:
  Clock::time_point begin_ = Clock::now();
  ReadyPointer ready_;
  Server server_;
  Steps<CheckOutcome> steps_;
};

int16_t Step(const SteppedTestModule& module, const QuarlCheckRequest& request, QuarlCheckWait& wait,
             QuarlCheckResult& result) {
  std::unique_ptr<SteppedCheck> check(static_cast<SteppedCheck*>(std::exchange(wait.state, nullptr)));
  if ((wait.events & QUARL_GIVE_UP) != 0) return QUARL_UNKNOWN;
  if (!check) {
    ReadyPointer ready = ReadyFor(module, request);
    if (!ready->trouble.empty()) return Give(Unusable(*ready), result);
    check = std::make_unique<SteppedCheck>(module, request, std::move(ready));
  }
  if (check->Go(wait.events)) return Give(check->Outcome(), result);
  const Wait& next = check->Waiting();
  wait.descriptor = next.descriptor;
  wait.events = next.events;
  wait.time = static_cast<uint32_t>(next.deadline.Left().count());
  wait.state = check.release();
  return QUARL_WAITING;
}

/// Runs a check's function for an exported one: what it throws becomes the text of an unknown result.
template <typename Function>
int16_t Answered(const QuarlCheckRequest* request, QuarlCheckResult* result, const Function& function) noexcept {
  constexpr auto kUnknown = static_cast<int16_t>(State::Unknown);
  if (request == nullptr || result == nullptr || request->size < sizeof(QuarlCheckRequest) ||
      result->size < sizeof(QuarlCheckResult))
    return kUnknown;
  try {
    return function();
  } catch (const std::exception& error) {
    WriteText(result->text, error.what());
    WriteText(result->performance, "");
    result->duration = -1;
  }
  return kUnknown;
}

}  // namespace

std::string TestModule::Judge(const Properties&, std::string&) const {
  return {};
}

CheckOutcome SteppedTestModule::Check(const Server& server, const Properties& properties,
                                      std::chrono::milliseconds limit) const {
  return Steps<CheckOutcome>(Begin(server, properties, limit)).Finish();
}

int16_t SetProperties(const TestModule& module, QuarlBuffer serverName, QuarlBuffer serverAddress,
                      QuarlBuffer properties) noexcept {
  try {
    const Server server{std::string(TextOf(serverName)), std::string(TextOf(serverAddress))};
    const auto attempt = [&module, server](const Properties& tried) { return Tried(module, server, tried); };
    return RunPropertyDialog({&module.Fields(), JudgeOf(module), "Test now", attempt}, properties);
  } catch (const std::exception& error) {
    Log(Severity::Error, error.what());
  }
  return -1;
}

int16_t RunCheck(const TestModule& module, const QuarlCheckRequest* request, QuarlCheckResult* result) noexcept {
  return Answered(request, result, [&] { return Give(Check(module, *request), *result); });
}

int16_t RunCheckStep(const SteppedTestModule& module, const QuarlCheckRequest* request, QuarlCheckWait* wait,
                     QuarlCheckResult* result) noexcept {
  if (wait == nullptr || wait->size < sizeof(QuarlCheckWait)) return static_cast<int16_t>(State::Unknown);
  return Answered(request, result, [&] { return Step(module, *request, *wait, *result); });
}

}  // namespace quarl::kit
