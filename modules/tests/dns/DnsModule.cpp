#include "tests/dns/DnsModule.h"

#include <arpa/nameser.h>

#include <algorithm>

#include "kit/Text.h"
#include "tests/common/Fields.h"
#include "tests/common/Settings.h"
#include "tests/common/Texts.h"
#include "tests/common/Verdict.h"
#include "tests/dns/DnsAnswer.h"
#include "tests/dns/DnsQuery.h"

namespace quarl::checks {
namespace {

using Texts = std::vector<std::string>;

struct Settings {
  DnsRequest request;
  const DnsType* type = nullptr;
  std::string match;
  Texts expected;
  Limits time;
};

const DnsType& TypeOf(const std::string& name) {
  for (const DnsType& type : DnsTypes()) {
    if (name == type.name) return type;
  }
  throw kit::SettingsError("type", "This type of record is not known.");
}

std::string NameOf(const kit::Properties& properties, const kit::Server& server, int type) {
  const std::string text = properties.Text("name");
  std::string name = Expanded("name", Trimmed(text), PlaceholdersOf(server));
  if (type == ns_t_ptr) name = ReverseName(name).value_or(name);
  if (name.empty() || HasControl(name)) throw kit::SettingsError("name", "This is no name: " + kit::OneLine(name, 200));
  return name;
}

std::string AskedServer(const kit::Properties& properties, const kit::Server& server) {
  const std::string ask = properties.Text("ask");
  if (ask == "system") return {};
  if (ask == "server") {
    if (server.address.empty()) throw kit::SettingsError("ask", "The server has no address.");
    return server.address;
  }
  std::string other(Trimmed(properties.Text("other")));
  if (!ReverseName(other)) throw kit::SettingsError("other", "This is no IP address.");
  return other;
}

Texts ExpectedOf(const kit::Properties& properties, const kit::Server& server, const DnsType& type) {
  Texts expected;
  for (const std::string& entry : properties.List("expected")) {
    const std::string text = Expanded("expected", entry, PlaceholdersOf(server));
    const std::optional<std::string> record = Normal(text, type.number);
    if (!record) {
      throw kit::SettingsError("expected", "A record of the type " + std::string(type.name) +
                                               " does not look like this: " + kit::OneLine(text, 200));
    }
    expected.push_back(*record);
  }
  return expected;
}

Settings SettingsOf(const kit::Properties& properties, const kit::Server& server) {
  Settings settings;
  settings.type = &TypeOf(properties.Text("type"));
  settings.request.name = NameOf(properties, server, settings.type->number);
  settings.request.type = settings.type->number;
  settings.request.server = AskedServer(properties, server);
  settings.request.port = static_cast<uint16_t>(properties.Integer("port"));
  settings.request.tcp = properties.Flag("tcp");
  settings.request.recursion = properties.Flag("recursion");
  settings.match = properties.Text("match");
  settings.expected = ExpectedOf(properties, server, *settings.type);
  settings.time = LimitsOf(properties, "time");
  return settings;
}

bool Has(const Texts& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// The first of some texts that another list has, or has not; "" when there is none.
std::string First(const Texts& texts, const Texts& others, bool has) {
  const auto found =
      std::find_if(texts.begin(), texts.end(), [&](const auto& text) { return Has(others, text) == has; });
  return found == texts.end() ? std::string() : kit::OneLine(*found, 100);
}

/// What is wrong with the records, as a part of a sentence; "" when nothing is.
std::string RecordFault(const Settings& settings, const Texts& records) {
  const Texts& expected = settings.expected;
  if (settings.match == "none") {
    if (expected.empty()) return records.empty() ? "" : "there must be none";
    const std::string unwanted = First(expected, records, true);
    return unwanted.empty() ? "" : unwanted + " must not be there";
  }
  if (records.empty()) return "there is none";
  if (settings.match == "any") {
    return expected.empty() || !First(expected, records, true).empty() ? "" : "none of the expected is there";
  }
  if (const std::string missing = First(expected, records, false); !missing.empty()) return missing + " is missing";
  if (settings.match != "exactly" || expected.empty()) return {};
  const std::string more = First(records, expected, false);
  return more.empty() ? "" : more + " is not expected";
}

std::string FactsOf(const Settings& settings, const DnsAnswer& answer, double milliseconds) {
  std::string list;
  for (const std::string& record : answer.records) {
    list += list.empty() ? "" : ", ";
    list += kit::OneLine(record, 100);
    if (list.size() > 300) break;
  }
  if (answer.code != 0) list = CodeName(answer.code);
  if (list.empty()) list = "no record";
  return std::string(settings.type->name) + ' ' + kit::OneLine(settings.request.name) + ": " + kit::OneLine(list) +
         " in " + Fixed(milliseconds, 0) + " ms";
}

kit::CheckOutcome OutcomeOf(const Settings& settings, const DnsReply& reply, bool warningFails) {
  Verdict verdict;
  const std::optional<DnsAnswer> answer = ReadAnswer(reply.message, settings.type->number);
  if (!answer) {
    verdict.Blame(Level::Critical, "it is damaged");
    return verdict.Outcome("An answer came", warningFails);
  }
  const double milliseconds = reply.Milliseconds();
  const bool absenceIsFine = settings.match == "none" && answer->code == ns_r_nxdomain;
  if (answer->code != ns_r_noerror && !absenceIsFine) {
    verdict.Blame(Level::Critical, "the server gives no answer to the question");
  } else if (std::string fault = RecordFault(settings, answer->records); !fault.empty()) {
    verdict.Blame(Level::Critical, std::move(fault));
  }
  verdict.Compare("time", milliseconds, settings.time, "ms");
  kit::PerformanceData performance;
  performance.Add(FigureOf("time", milliseconds, 1, "ms", settings.time));
  performance.Add(FigureOf("records", static_cast<double>(answer->records.size()), 0, ""));
  kit::CheckOutcome outcome = verdict.Outcome(FactsOf(settings, *answer, milliseconds), warningFails);
  outcome.performance = performance.Text();
  return outcome;
}

}  // namespace

kit::CheckOutcome DnsModule::Check(const kit::Server& server, const kit::Properties& properties,
                                   std::chrono::milliseconds limit) const {
  Settings settings = SettingsOf(properties, server);
  settings.request.limit = TimeWithin(limit, properties.Integer("timeOut"));
  const DnsReply reply = Ask(settings.request);
  if (reply.end != Reply::End::Answered) return OutcomeWithoutAnswer(reply);
  kit::CheckOutcome outcome = OutcomeOf(settings, reply, properties.Flag(kWarningFails));
  outcome.duration = reply.time;
  return outcome;
}

std::string DnsModule::Judge(const kit::Properties& properties, std::string& key) const {
  return JudgedBy(SettingsOf, properties, key);
}

}  // namespace quarl::checks
