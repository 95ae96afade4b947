#include "tests/http/HttpModule.h"

#include "kit/Text.h"
#include "tests/common/Fields.h"
#include "tests/common/Settings.h"
#include "tests/common/Texts.h"
#include "tests/common/Verdict.h"
#include "tests/http/BodyRule.h"
#include "tests/http/HttpRequest.h"
#include "tests/http/StatusList.h"

namespace quarl::checks {
namespace {

struct Settings {
  HttpRequest request;
  StatusList status;
  BodyRule body;
  Limits time, days;
};

/// A value inside a URL: an IPv6 address in brackets, else what is not unreserved as %XX.
std::string UrlPart(const std::string& value) {
  constexpr std::string_view kUnreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  constexpr std::string_view kHex = "0123456789ABCDEF";
  if (value.find(':') != std::string::npos && value.find_first_not_of("0123456789abcdefABCDEF:.") == std::string::npos)
    return '[' + value + ']';
  std::string result;
  for (const char byte : value) {
    if (kUnreserved.find(byte) != std::string_view::npos) {
      result += byte;
    } else {
      const auto number = static_cast<unsigned char>(byte);
      result += {'%', kHex[number >> 4U], kHex[number & 15U]};
    }
  }
  return result;
}

std::string UrlOf(const kit::Properties& properties, const kit::Server& server) {
  const kit::Placeholders known{{"name", UrlPart(server.name)}, {"address", UrlPart(server.address)}};
  const std::string text = properties.Text("url");
  std::string url = Expanded("url", Trimmed(text), known);
  const std::optional<UrlParts> parts = HasControl(url) ? std::nullopt : SplitUrl(url);
  if (!parts || parts->host.empty()) throw kit::SettingsError("url", "This is no URL: " + kit::OneLine(url, 200));
  if (parts->scheme != "http" && parts->scheme != "https") {
    throw kit::SettingsError("url", "The URL must begin with http:// or https://.");
  }
  if (parts->credentials)
    throw kit::SettingsError("url", "User and password have fields of their own and do not belong here.");
  return url;
}

std::vector<std::string> HeadersOf(const kit::Properties& properties, const kit::Server& server) {
  constexpr std::string_view kToken = "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const kit::Placeholders known = PlaceholdersOf(server);
  std::vector<std::string> headers;
  for (const std::string& entry : properties.List("headers")) {
    std::string header = Expanded("headers", entry, known);
    const std::size_t colon = header.find(':');
    const bool named = colon != 0 && colon != std::string::npos && header.find_first_not_of(kToken) == colon;
    if (!named || HasControl(header) || Trimmed(std::string_view(header).substr(colon + 1)).empty()) {
      throw kit::SettingsError("headers",
                               "This is no header of the form \"Name: value\": " + kit::OneLine(header, 200));
    }
    headers.push_back(std::move(header));
  }
  return headers;
}

BodyRule BodyRuleOf(const kit::Properties& properties) {
  const std::string content = properties.Text("content");
  BodyRule rule;
  rule.absent = content == "noText" || content == "noPattern";
  if (content != "any") rule.kind = content.ends_with("ext") ? BodyRule::Kind::Text : BodyRule::Kind::Pattern;
  rule.ignoreCase = properties.Flag("ignoreCase");
  rule.wanted = properties.Text("wanted");
  if (const std::string defect = rule.Defect(); !defect.empty()) throw kit::SettingsError("wanted", defect);
  return rule;
}

HttpRequest RequestOf(const kit::Properties& properties, const kit::Server& server) {
  const std::string login = properties.Text("login");
  const std::string protocol = properties.Text("protocol");
  HttpRequest request;
  request.url = UrlOf(properties, server);
  request.method = properties.Text("method");
  request.headers = HeadersOf(properties, server);
  request.body = properties.Text("body");
  if (login != "none") request.user = properties.Text("user");
  if (login != "none" && request.user.empty()) throw kit::SettingsError("user", "The login needs a user.");
  request.password = properties.Text("password");
  request.digest = login == "digest";
  if (properties.Flag("toServer")) {
    request.connectAddress = server.address;
  } else if (protocol != "any") {
    request.family = protocol == "4" ? 4 : 6;
  }
  request.verify = properties.Flag("verify");
  if (request.verify) request.authorities = properties.Text("authorities");
  if (!request.authorities.empty() && !request.authorities.starts_with('/')) {
    throw kit::SettingsError("authorities", "The path must begin with a slash.");
  }
  request.redirects = properties.Flag("follow") ? static_cast<long>(properties.Integer("redirects")) : 0;
  request.longestBody = static_cast<std::size_t>(properties.Integer("longestBody")) * 1024;
  return request;
}

Settings SettingsOf(const kit::Properties& properties, const kit::Server& server) {
  const std::optional<StatusList> status = StatusList::Parse(properties.Text("status"));
  if (!status)
    throw kit::SettingsError("status", "Expected are numbers from 100 to 599 and ranges, as in \"200-299,301\".");
  Settings settings{RequestOf(properties, server), *status, BodyRuleOf(properties), LimitsOf(properties, "time"),
                    LimitsOf(properties, "days", true)};
  settings.request.wantCertificate = settings.days.warning > 0 || settings.days.critical > 0;
  return settings;
}

double DaysLeft(std::chrono::system_clock::time_point end) {
  return std::chrono::duration<double, std::ratio<86400>>(end - std::chrono::system_clock::now()).count();
}

kit::CheckOutcome OutcomeOf(const Settings& settings, const HttpReply& reply, bool warningFails) {
  Verdict verdict;
  const double milliseconds = reply.Milliseconds();
  std::string facts = reply.version + ' ' + std::to_string(reply.status) + " in " + Fixed(milliseconds, 0) + " ms, " +
                      std::to_string(reply.body.size()) + " bytes";
  if (reply.cut) facts += " read of a longer body";
  kit::PerformanceData performance;
  performance.Add(FigureOf("time", milliseconds, 1, "ms", settings.time));
  performance.Add(FigureOf("size", static_cast<double>(reply.body.size()), 0, "B"));
  if (!settings.status.Has(reply.status)) verdict.Blame(Level::Critical, "this status is not expected");
  settings.body.Apply(reply.body, reply.cut, verdict);
  verdict.Compare("time", milliseconds, settings.time, "ms");
  if (reply.certificateEnd) {
    const double days = DaysLeft(*reply.certificateEnd);
    facts += ", certificate for " + Fixed(days, 1) + " days";
    performance.Add(FigureOf("days_left", days, 1, ""));
    // A certificate that is over has less than any limit.
    verdict.Compare("certificate", days, settings.days, "days");
  }
  kit::CheckOutcome outcome = verdict.Outcome(facts, warningFails);
  outcome.performance = performance.Text();
  outcome.duration = reply.time;
  return outcome;
}

}  // namespace

kit::CheckOutcome HttpModule::Check(const kit::Server& server, const kit::Properties& properties,
                                    std::chrono::milliseconds limit) const {
  Settings settings = SettingsOf(properties, server);
  settings.request.limit = TimeWithin(limit, properties.Integer("timeOut"));
  const HttpReply reply = Fetch(settings.request);
  if (reply.end != Reply::End::Answered) return OutcomeWithoutAnswer(reply);
  return OutcomeOf(settings, reply, properties.Flag(kWarningFails));
}

std::string HttpModule::Judge(const kit::Properties& properties, std::string& key) const {
  return JudgedBy(SettingsOf, properties, key);
}

}  // namespace quarl::checks
