#include "alerts/webhook/WebhookModule.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <thread>

#include "alerts/common/EventFacts.h"
#include "kit/SettingsError.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

constexpr std::string_view kSecretMark = "{secret}";

/// "2026-01-31T23:59:59Z", null for a time that is not known.
kit::Json UtcTime(int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  std::array<char, 64> text{};
  if (seconds <= 0 || ::gmtime_r(&time, &parts) == nullptr) return nullptr;
  return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts));
}

/// What stands between the quotes of a JSON string.
std::string JsonInside(const std::string& text) {
  const std::string quoted = kit::Json(text).dump();
  return quoted.substr(1, quoted.size() - 2);
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
}

bool IsToken(std::string_view text) {
  constexpr std::string_view kToken = "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return !text.empty() && text.find_first_not_of(kToken) == std::string_view::npos;
}

std::string LowerCase(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

/// Adds a header after a look at both parts; key is the field to blame.
void AddHeader(HttpMessage& message, const std::string& key, const std::string& name, const std::string& value) {
  constexpr std::array<std::string_view, 5> kOwn{"content-length", "content-type", "transfer-encoding", "connection",
                                                 "idempotency-key"};
  if (!IsToken(name)) throw kit::SettingsError(key, '"' + kit::OneLine(name, 80) + "\" is no name of a header.");
  if (std::find(kOwn.begin(), kOwn.end(), LowerCase(name)) != kOwn.end()) {
    throw kit::SettingsError(key, "The header " + name + " is set by this module.");
  }
  if (HasControl(value)) throw kit::SettingsError(key, "The value of the header " + name + " has a control character.");
  // The library's way of writing a header without a value.
  message.headers.push_back(value.empty() ? name + ';' : name + ": " + value);
}

void AddHeaders(HttpMessage& message, const kit::Properties& properties) {
  const std::string token = properties.Text("token");
  if (!token.empty()) AddHeader(message, "token", "Authorization", "Bearer " + token);
  for (const std::string& line : properties.List("headers")) {
    const std::size_t colon = std::min(line.find(':'), line.size());
    if (colon == line.size()) throw kit::SettingsError("headers", "A header has a colon behind its name.");
    const std::size_t value = std::min(line.find_first_not_of(" \t", colon + 1), line.size());
    AddHeader(message, "headers", line.substr(0, colon), line.substr(value));
  }
  const std::string name = properties.Text("secretHeader"), value = properties.Text("secretValue");
  if (!name.empty()) AddHeader(message, "secretHeader", name, value);
  if (name.empty() && !value.empty())
    throw kit::SettingsError("secretHeader", "The secret value needs a header's name.");
}

std::string UrlOf(const kit::Properties& properties) {
  std::string url = properties.Text("url");
  const std::string secret = properties.Text("urlSecret");
  const std::size_t at = url.find(kSecretMark);
  if (at == std::string::npos && !secret.empty()) {
    throw kit::SettingsError("urlSecret", "The URL has no {secret} in which this would stand.");
  }
  if (at != std::string::npos) {
    if (secret.empty()) throw kit::SettingsError("urlSecret", "The URL has a {secret}, which is missing here.");
    url.replace(at, kSecretMark.size(), secret);
  }
  const bool web = url.starts_with("https://") || url.starts_with("http://");
  const bool whole = std::none_of(url.begin(), url.end(), [](char c) { return c <= ' ' || c == '\x7F'; });
  if (!web) throw kit::SettingsError("url", "The URL must begin with https:// or http://.");
  if (!whole || url.find('{') != std::string::npos) {
    throw kit::SettingsError("url", "The URL has a blank, a brace or another character that must be written as %XX.");
  }
  if (const std::string fault = FaultOfUrl(url); !fault.empty()) throw kit::SettingsError("url", fault);
  return url;
}

std::string BodyOf(const kit::Event& event, const kit::Properties& properties, std::string& contentType) {
  const std::string kind = properties.Text("body"), pattern = properties.Text("template");
  contentType = "application/json";
  if (kind == "facts") return EventJson(event);
  if (const std::string fault = FaultOfTemplate(pattern); !fault.empty()) throw kit::SettingsError("template", fault);
  if (kind == "text") {
    contentType = properties.Text("contentType");
    if (contentType.empty() || HasControl(contentType))
      throw kit::SettingsError("contentType", "This is no content type.");
    return Expand(pattern, FactsOf(event));
  }
  const std::string body = Expand(pattern, FactsOf(event), JsonInside);
  if (!kit::Json::accept(body)) {
    throw kit::SettingsError("template",
                             "This is no JSON: look at commas, braces, and quotes around the placeholders.");
  }
  return body;
}

}  // namespace

WebhookModule::WebhookModule()
    : WebhookModule([](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }) {}

std::string EventJson(const kit::Event& event) {
  kit::Json json = kit::Json::object();
  json["format"] = 1;
  for (Fact& fact : FactsOf(event)) json[fact.name] = std::move(fact.value);
  json["time"] = UtcTime(event.time);
  json["since"] = UtcTime(event.since);
  return json.dump();
}

HttpMessage ComposeRequest(const kit::Event& event, const kit::Properties& properties) {
  HttpMessage message;
  std::string contentType;
  message.url = UrlOf(properties);
  message.method = properties.Text("method");
  AddHeaders(message, properties);
  message.body = BodyOf(event, properties, contentType);
  message.headers.push_back("Content-Type: " + contentType);
  const std::string id = kit::OneLine(event.messageId, 200);
  if (!id.empty()) message.headers.push_back("Idempotency-Key: " + id);
  message.checkCertificate = properties.Flag("checkCertificate");
  message.authorities = properties.Text("authorities");
  message.followRedirects = properties.Flag("follow");
  message.attemptLimit = std::chrono::seconds(properties.Integer("attemptLimit"));
  return message;
}

std::string WebhookModule::Send(const kit::Event& event, const kit::Properties& properties) const {
  const std::vector<std::string> secrets{properties.Text("urlSecret"), properties.Text("token"),
                                         properties.Text("secretValue")};
  return DeliverHttp(ComposeRequest(event, properties), secrets, wait_);
}

std::string WebhookModule::Judge(const kit::Properties& properties, std::string& key) const {
  return kit::Judged(key, [&] { return ComposeRequest(SampleEvent(), properties); });
}

}  // namespace quarl::alerts
