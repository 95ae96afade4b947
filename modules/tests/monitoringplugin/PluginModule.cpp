#include "tests/monitoringplugin/PluginModule.h"

#include <unistd.h>

#include <array>
#include <cstring>

#include "kit/ProcessRunner.h"
#include "kit/Text.h"
#include "tests/common/Fields.h"
#include "tests/common/Settings.h"
#include "tests/common/Texts.h"
#include "tests/monitoringplugin/PluginOutput.h"

namespace quarl::checks {
namespace {

constexpr std::array<const char*, 3> kFolders = {"/usr/lib/nagios/plugins", "/usr/lib64/nagios/plugins",
                                                 "/usr/lib/monitoring-plugins"};
constexpr std::size_t kLongestOutput = std::size_t{256} * 1024;

std::string ProgramOf(const kit::Properties& properties) {
  const std::string text = properties.Text("program");
  std::string program(Trimmed(text));
  if (program.empty()) throw kit::SettingsError("program", "A program is needed.");
  if (program.front() == '/') return program;
  if (program.find('/') != std::string::npos) {
    throw kit::SettingsError("program", "A path must begin with a slash; a name alone is looked for in " +
                                            std::string(kFolders.front()) + '.');
  }
  for (const char* folder : kFolders) {
    std::string path = std::string(folder) + '/' + program;
    if (::access(path.c_str(), F_OK) == 0) return path;
  }
  return std::string(kFolders.front()) + '/' + program;
}

std::vector<std::pair<std::string, std::string>> EnvironmentOf(const kit::Properties& properties,
                                                               const kit::Server& server) {
  constexpr std::string_view kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  kit::Placeholders known = PlaceholdersOf(server);
  known.emplace_back("secret", properties.Text("secret"));
  known.emplace_back("secret2", properties.Text("secret2"));
  std::vector<std::pair<std::string, std::string>> environment = {
      {"PATH", "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"}, {"LC_CTYPE", "C.UTF-8"}};
  for (const std::string& entry : properties.List("environment")) {
    const std::size_t equals = entry.find('=');
    const std::string name = entry.substr(0, equals);
    const bool digit = !name.empty() && name.front() >= '0' && name.front() <= '9';
    if (equals == std::string::npos || name.empty() || digit ||
        name.find_first_not_of(kNameCharacters) != std::string::npos) {
      throw kit::SettingsError("environment", "This is no variable of the form NAME=VALUE: " + kit::OneLine(name, 100));
    }
    std::erase_if(environment, [&](const auto& variable) { return variable.first == name; });
    environment.emplace_back(name, Expanded("environment", std::string_view(entry).substr(equals + 1), known));
  }
  return environment;
}

kit::ProcessRequest RequestOf(const kit::Properties& properties, const kit::Server& server) {
  kit::ProcessRequest request{ProgramOf(properties)};
  const kit::Placeholders known = PlaceholdersOf(server);
  for (const std::string& argument : properties.List("arguments")) {
    request.arguments.push_back(Expanded("arguments", argument, known));
  }
  request.environment = EnvironmentOf(properties, server);
  request.handedOn = {"HOME", "USER", "LOGNAME", "TZ"};
  request.longestOutput = kLongestOutput;
  request.endWhenLong = true;
  request.endLeftovers = true;
  return request;
}

/// What the convention makes of an exit code.
void SetState(int code, bool warningFails, kit::CheckOutcome& outcome) {
  switch (code) {
    case 0:
      outcome.state = kit::State::Passed;
      break;
    case 1:
      outcome.state = warningFails ? kit::State::Failed : kit::State::Passed;
      if (!outcome.text.starts_with("WARNING")) outcome.text = "WARNING: " + outcome.text;
      break;
    case 2:
      outcome.state = kit::State::Failed;
      break;
    case 3:
      outcome.state = kit::State::Unknown;
      break;
    default:
      outcome.state = kit::State::Unknown;
      outcome.text = "The program ended with code " + std::to_string(code) + ", which has no meaning: " + outcome.text;
  }
}

kit::CheckOutcome OutcomeOf(const kit::ProcessResult& result, bool warningFails) {
  const PluginOutput output = ReadPluginOutput(result.output);
  kit::CheckOutcome outcome;
  outcome.text = output.text;
  if (outcome.text.empty()) outcome.text = kit::OneLine(kit::FirstLine(result.errors));
  if (outcome.text.empty()) outcome.text = "The program wrote nothing";
  outcome.performance = output.performance;
  SetState(result.code, warningFails, outcome);
  return outcome;
}

/// " (Terminated)"; "" for a signal without a name.
std::string SignalName(int signal) {
  const char* const name = ::sigdescr_np(signal);
  return name == nullptr ? std::string() : std::string(" (") + name + ')';
}

std::string FaultOf(const kit::ProcessResult& result, std::chrono::milliseconds limit) {
  const std::string said = kit::OneLine(ReadPluginOutput(result.output).text, 200);
  const std::string behind = (result.remains ? "; it still has not ended" : "") +
                             (said.empty() ? std::string(".") : "; it had written: " + said);
  switch (result.end) {
    case kit::ProcessResult::End::TimedOut:
      return "The program did not end within " + std::to_string(limit.count()) + " ms and was ended" + behind;
    case kit::ProcessResult::End::TooLong:
      return "The program wrote more than " + std::to_string(kLongestOutput / 1024) + " KiB and was ended" + behind;
    case kit::ProcessResult::End::Killed:
      return "The program was ended by signal " + std::to_string(result.code) + SignalName(result.code) + behind;
    default:
      return result.fault;
  }
}

}  // namespace

kit::Task<kit::CheckOutcome> PluginModule::Begin(const kit::Server& server, const kit::Properties& properties,
                                                 std::chrono::milliseconds limit) const {
  kit::ProcessRequest request = RequestOf(properties, server);
  request.limit = TimeWithin(limit, properties.Integer("timeOut"));
  const std::vector<std::string> secrets{properties.Text("secret"), properties.Text("secret2")};
  kit::ProcessResult result = co_await kit::RunProcessInSteps(request);
  for (std::string* text : {&result.output, &result.errors}) *text = kit::WithoutSecrets(std::move(*text), secrets);
  kit::CheckOutcome outcome;
  if (result.end == kit::ProcessResult::End::Exited) {
    outcome = OutcomeOf(result, properties.Flag(kWarningFails));
  } else {
    outcome.text = FaultOf(result, request.limit);
  }
  outcome.duration = result.duration;
  co_return outcome;
}

std::string PluginModule::Judge(const kit::Properties& properties, std::string& key) const {
  return JudgedBy(RequestOf, properties, key);
}

}  // namespace quarl::checks
