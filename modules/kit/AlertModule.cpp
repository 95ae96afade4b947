#include "kit/AlertModule.h"

#include <atomic>
#include <chrono>
#include <random>

#include "kit/Buffers.h"
#include "kit/PropertiesCache.h"
#include "kit/PropertyDialog.h"
#include "kit/Text.h"

namespace quarl::kit {
namespace {

constexpr int16_t kDelivered = 0;
constexpr int16_t kNotDelivered = 1;

/// Unlike every other message's: the process's random part and a count.
std::string NewMessageId() {
  static const std::uint64_t process = [] {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
  }();
  static std::atomic<std::uint32_t> count{0};
  return "test-" + std::to_string(process) + "-" + std::to_string(++count);
}

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

Event TestEventFor(std::string serverName, std::string serverAddress) {
  Event event;
  event.serverName = std::move(serverName);
  event.serverAddress = std::move(serverAddress);
  event.time = Now();
  event.messageId = NewMessageId();
  event.problemId = event.messageId;
  return event;
}

Event EventOf(const QuarlEvent& facts) {
  Event event;
  event.kind = static_cast<EventKind>(facts.kind);
  event.subject = TextOf(facts.subject);
  event.message = TextOf(facts.message);
  event.serverName = TextOf(facts.serverName);
  event.serverAddress = TextOf(facts.serverAddress);
  event.groupName = TextOf(facts.groupName);
  event.testName = TextOf(facts.testName);
  event.resultText = TextOf(facts.resultText);
  event.time = facts.time;
  event.since = facts.since;
  event.problemId = TextOf(facts.problemId);
  event.messageId = TextOf(facts.messageId);
  return event;
}

Judge JudgeOf(const AlertModule& module) {
  return [&module](const Properties& properties, std::string& key) { return module.Judge(properties, key); };
}

std::string Send(const AlertModule& module, const Event& event, const Properties& properties) {
  try {
    return module.Send(event, properties);
  } catch (const std::exception& error) {
    const std::string text = error.what();
    return text.empty() ? "The message could not be delivered." : text;
  }
}

int16_t Deliver(const AlertModule& module, const Event& event, std::string_view properties, QuarlBuffer resultText) {
  static auto& cache = *new PropertiesCache;  // never destroyed: a delivery may outlast the end of main()
  const auto ready = cache.Get(properties, module.Fields(), JudgeOf(module));
  const std::string failure =
      ready->trouble.empty() ? Send(module, event, ready->properties) : "Settings: " + ready->trouble;
  WriteFilled(resultText, OneLine(failure, resultText.size > 0 ? resultText.size - 1 : 0), ' ');
  return failure.empty() ? kDelivered : kNotDelivered;
}

/// A delivery that lets no exception out.
template <typename Delivery>
int16_t Guarded(QuarlBuffer resultText, Delivery delivery) {
  try {
    return delivery();
  } catch (const std::exception& error) {
    WriteFilled(resultText, error.what(), ' ');
  }
  return kNotDelivered;
}

Attempt Tried(const AlertModule& module, const std::string& serverName, const std::string& serverAddress,
              const Properties& properties) {
  Event event = TestEventFor(serverName, serverAddress);
  event.subject = "Alert!";
  event.message = "This is a test of the alert settings for " + serverName + ".\r\n";
  const std::string failure = Send(module, event, properties);
  return {failure.empty(), failure.empty() ? "The message was delivered." : failure};
}

}  // namespace

std::string AlertModule::Judge(const Properties&, std::string&) const {
  return {};
}

int16_t SetProperties(const AlertModule& module, QuarlBuffer serverName, QuarlBuffer serverAddress,
                      QuarlBuffer properties) noexcept {
  try {
    const std::string name(TextOf(serverName));
    const std::string address(TextOf(serverAddress));
    const auto attempt = [&module, name, address](const Properties& tried) {
      return Tried(module, name, address, tried);
    };
    return RunPropertyDialog({&module.Fields(), JudgeOf(module), "Send a test", attempt}, properties);
  } catch (const std::exception& error) {
    Log(Severity::Error, error.what());
  }
  return -1;
}

int16_t SendTestAlert(const AlertModule& module, const TestAlert& alert, QuarlBuffer properties,
                      QuarlBuffer resultText) noexcept {
  return Guarded(resultText, [&] {
    Event event = TestEventFor(std::string(TextOf(alert.serverName)), std::string(TextOf(alert.serverAddress)));
    event.subject = TextOf(alert.subject);
    event.message = TextOf(alert.message);
    return Deliver(module, event, TextOf(properties), resultText);
  });
}

int16_t SendEvent(const AlertModule& module, const QuarlEvent* event, const char* properties,
                  QuarlBuffer resultText) noexcept {
  if (event == nullptr || event->size < sizeof(QuarlEvent)) return kNotDelivered;
  return Guarded(resultText, [&] { return Deliver(module, EventOf(*event), TextOf(properties), resultText); });
}

}  // namespace quarl::kit
