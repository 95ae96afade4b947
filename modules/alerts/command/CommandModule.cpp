#include "alerts/command/CommandModule.h"

#include <cstring>

#include "alerts/common/EventFacts.h"
#include "kit/SettingsError.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

using kit::FieldType;

std::vector<kit::Field> RunFields() {
  return {
      {.key = "program",
       .label = "Program",
       .help = "Path of a program or of a script whose first line names its interpreter. No shell is involved.",
       .required = true},
      {.key = "arguments",
       .label = "Arguments",
       .type = FieldType::List,
       .help = "One a line, handed over as they stand. May contain " + PlaceholderNames() + '.',
       .longest = 2000},
      {.key = "secret",
       .label = "Secret",
       .type = FieldType::Secret,
       .help = "The program finds it in its environment as QUARL_SECRET; arguments can be seen by every user."},
      {.key = "limit",
       .label = "Time limit",
       .type = FieldType::Integer,
       .standard = 30,
       .unit = "s",
       .help = "Then the program is ended, with everything in its process group.",
       .minimum = 1,
       .maximum = 50},
  };
}

std::string Seconds(int64_t time) {
  return time > 0 ? std::to_string(time) : std::string();
}

/// The variables of the documentation. A fact's own lines end in "\n".
std::vector<std::pair<std::string, std::string>> EnvironmentOf(const kit::Event& event, const std::string& secret) {
  static const std::pair<const char*, const char*> kNames[] = {
      {"state", "QUARL_EVENT"},   {"subject", "QUARL_SUBJECT"}, {"message", "QUARL_MESSAGE"},
      {"server", "QUARL_SERVER"}, {"address", "QUARL_ADDRESS"}, {"group", "QUARL_GROUP"},
      {"test", "QUARL_TEST"},     {"text", "QUARL_TEXT"},       {"problem", "QUARL_PROBLEM"},
      {"id", "QUARL_MESSAGE_ID"}};
  std::vector<std::pair<std::string, std::string>> environment;
  for (const Fact& fact : FactsOf(event)) {
    for (const auto& [name, variable] : kNames) {
      if (std::strcmp(name, fact.name) == 0) environment.emplace_back(variable, fact.value);
    }
  }
  environment.emplace_back("QUARL_TIME", Seconds(event.time));
  environment.emplace_back("QUARL_SINCE", Seconds(event.since));
  environment.emplace_back("QUARL_SECRET", secret);
  return environment;
}

std::string Sentence(const kit::ProcessRequest& request, const kit::ProcessResult& result, const std::string& secret) {
  using End = kit::ProcessResult::End;
  if (result.end == End::NotStarted) return result.fault;
  if (result.end == End::Exited && result.code == 0) return {};
  std::string line = kit::FirstLine(result.errors);
  if (line.empty()) line = kit::FirstLine(result.output);
  line = kit::WithoutSecrets(std::move(line), {secret});
  if (result.end == End::Exited && !line.empty()) return kit::OneLine(line, 200);
  std::string text = kit::OneLine(request.program, 100);
  if (result.end == End::TimedOut) text += " did not end within " + std::to_string(request.limit.count() / 1000) + " s";
  if (result.end == End::Killed) text += " was ended by signal " + std::to_string(result.code);
  if (result.end == End::Exited) text += " ended with code " + std::to_string(result.code) + " and said nothing";
  return line.empty() ? text + '.' : text + ": " + kit::OneLine(line, 100);
}

}  // namespace

const kit::Form& CommandModule::Fields() const {
  static const kit::Form form{"command", "Command", RunFields()};
  return form;
}

kit::ProcessRequest ComposeRun(const kit::Event& event, const kit::Properties& properties) {
  const std::vector<Fact> facts = FactsOf(event);
  kit::ProcessRequest request;
  request.program = properties.Text("program");
  if (!request.program.starts_with('/')) throw kit::SettingsError("program", "The path must begin with a slash.");
  for (const std::string& argument : properties.List("arguments")) {
    if (const std::string fault = FaultOfTemplate(argument); !fault.empty())
      throw kit::SettingsError("arguments", fault);
    request.arguments.push_back(Expand(argument, facts));
  }
  request.environment = EnvironmentOf(event, properties.Text("secret"));
  request.limit = std::chrono::seconds(properties.Integer("limit"));
  return request;
}

std::string CommandModule::Send(const kit::Event& event, const kit::Properties& properties) const {
  const kit::ProcessRequest request = ComposeRun(event, properties);
  return Sentence(request, kit::RunProcess(request), properties.Text("secret"));
}

std::string CommandModule::Judge(const kit::Properties& properties, std::string& key) const {
  return kit::Judged(key, [&] { return ComposeRun(SampleEvent(), properties); });
}

std::string CommandModule::About() const {
  return "Command " QUARL_MODULE_VERSION
         "\n\nRuns a program or script about an alert, with all facts in its environment. Exit code 0 means delivered.";
}

}  // namespace quarl::alerts
