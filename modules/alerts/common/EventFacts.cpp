#include "alerts/common/EventFacts.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "kit/Text.h"

namespace quarl::alerts {
namespace {

std::string LocalTime(int64_t seconds) {
  if (seconds <= 0) return {};
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  std::array<char, 64> text{};
  if (::localtime_r(&time, &parts) == nullptr) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &parts)};
}

std::string PlainLines(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (!pair) result += text[i] == '\r' ? '\n' : text[i];
  }
  while (result.ends_with('\n')) result.pop_back();
  return result;
}

bool IsPlaceholder(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

/// Walks over a template: calls text for what stays and placeholder for each name in braces.
template <typename OnText, typename OnPlaceholder>
void Walk(std::string_view pattern, OnText text, OnPlaceholder placeholder) {
  for (std::size_t at = 0; at < pattern.size();) {
    const std::size_t open = pattern.find('{', at);
    if (open == std::string_view::npos) return text(pattern.substr(at));
    text(pattern.substr(at, open - at));
    const std::size_t close = pattern.find('}', open);
    const std::string_view name =
        close == std::string_view::npos ? std::string_view() : pattern.substr(open + 1, close - open - 1);
    if (IsPlaceholder(name)) {
      placeholder(name);
      at = close + 1;
    } else {
      text(pattern.substr(open, 1));
      at = open + 1;
    }
  }
}

const Fact* Find(const std::vector<Fact>& facts, std::string_view name) {
  const auto found = std::find_if(facts.begin(), facts.end(), [&](const Fact& fact) { return fact.name == name; });
  return found == facts.end() ? nullptr : &*found;
}

}  // namespace

const char* StateWord(kit::EventKind kind) {
  switch (kind) {
    case kit::EventKind::Problem:
      return "problem";
    case kit::EventKind::Recovery:
      return "recovery";
    default:
      return "test";
  }
}

std::vector<Fact> FactsOf(const kit::Event& event) {
  std::vector<Fact> facts{
      {"subject", event.subject},        {"message", event.message},       {"server", event.serverName},
      {"address", event.serverAddress},  {"group", event.groupName},       {"test", event.testName},
      {"text", event.resultText},        {"state", StateWord(event.kind)}, {"time", LocalTime(event.time)},
      {"since", LocalTime(event.since)}, {"problem", event.problemId},     {"id", event.messageId}};
  for (Fact& fact : facts) fact.value = PlainLines(kit::ToUtf8(fact.value));
  return facts;
}

std::string Expand(std::string_view pattern, const std::vector<Fact>& facts, const Escape& escape) {
  std::string result;
  Walk(
      pattern, [&](std::string_view text) { result += text; },
      [&](std::string_view name) {
        const Fact* fact = Find(facts, name);
        if (fact == nullptr) {
          result.append("{").append(name).append("}");
        } else {
          result += escape ? escape(fact->value) : fact->value;
        }
      });
  return result;
}

std::string FaultOfTemplate(std::string_view pattern) {
  const std::vector<Fact> facts = FactsOf(SampleEvent());
  std::string fault;
  Walk(
      pattern, [](std::string_view) {},
      [&](std::string_view name) {
        if (!fault.empty() || Find(facts, name) != nullptr) return;
        fault = '{' + std::string(name) + "} is not one of " + PlaceholderNames() + '.';
      });
  return fault;
}

std::string PlaceholderNames() {
  std::string names;
  for (const Fact& fact : FactsOf({})) names += (names.empty() ? "{" : ", {") + std::string(fact.name) + "}";
  return names;
}

kit::Event SampleEvent() {
  return {kit::EventKind::Problem,
          "www1: Port 443 failed",
          "The test \"Port 443\" of www1 failed.\r\nNo answer within 3 seconds.\r\n",
          "www1",
          "192.0.2.10",
          "Web",
          "Port 443",
          "No answer within 3 seconds",
          1767225600,
          1767225300,
          "sample-problem",
          "sample-message"};
}

}  // namespace quarl::alerts
