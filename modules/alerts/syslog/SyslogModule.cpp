#include "alerts/syslog/SyslogModule.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

#include "alerts/common/EventFacts.h"
#include "base/Descriptor.h"
#include "kit/SettingsError.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

using kit::FieldType;

constexpr std::size_t kLongestText = 2000;  ///< what every log daemon takes
constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct Named {
  const char* name;
  int code;
};
constexpr Named kFacilities[] = {{"daemon", 3},  {"user", 1},    {"local0", 16}, {"local1", 17}, {"local2", 18},
                                 {"local3", 19}, {"local4", 20}, {"local5", 21}, {"local6", 22}, {"local7", 23}};
constexpr Named kSeverities[] = {{"emerg", 0},   {"alert", 1},  {"crit", 2}, {"err", 3},
                                 {"warning", 4}, {"notice", 5}, {"info", 6}, {"debug", 7}};

template <std::size_t Count>
std::vector<kit::Choice> ChoicesOf(const Named (&names)[Count]) {
  std::vector<kit::Choice> choices;
  for (const Named& each : names) choices.push_back({each.name, each.name});
  return choices;
}

template <std::size_t Count>
int CodeOf(const Named (&names)[Count], const std::string& name) {
  const auto* const found = std::find_if(names, names + Count, [&](const Named& each) { return each.name == name; });
  return found == names + Count ? names[0].code : found->code;
}

std::vector<kit::Field> LineFields() {
  return {
      {.key = "facility",
       .label = "Facility",
       .type = FieldType::Choice,
       .standard = "daemon",
       .help = "The part of the system that the lines seem to come from.",
       .choices = ChoicesOf(kFacilities)},
      {.key = "problem",
       .label = "Severity of a problem",
       .type = FieldType::Choice,
       .standard = "err",
       .choices = ChoicesOf(kSeverities)},
      {.key = "recovery",
       .label = "Severity of a recovery",
       .type = FieldType::Choice,
       .standard = "notice",
       .help = "A test has it too.",
       .choices = ChoicesOf(kSeverities)},
      {.key = "tag",
       .label = "Tag",
       .standard = "quarl",
       .help = "The program's name in the lines: up to 32 letters, digits, dashes and dots.",
       .required = true,
       .longest = 32},
      {.key = "text",
       .label = "Text",
       .standard = "{state}: {subject}",
       .help = "May contain " + PlaceholderNames() + ". Line ends become blanks.",
       .required = true},
      {.key = "socket",
       .label = "Socket",
       .standard = "/dev/log",
       .help = "Where the log daemon or the journal listens.",
       .required = true,
       .longest = sizeof(sockaddr_un::sun_path) - 1},
  };
}

/// 0, or the error's number. A daemon whose queue stays full is not waited for longer than five seconds.
int SendTo(const std::string& path, int type, const std::string& bytes) {
  const Descriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  const timeval patience{5, 0};
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  if (!socket) return errno;
  std::ignore = ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
  if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) return errno;
  const ssize_t sent = ::send(socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (sent < 0) return errno;
  return static_cast<std::size_t>(sent) == bytes.size() ? 0 : EMSGSIZE;
}

std::string LogTime(int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  std::array<char, 48> text{};
  if (::localtime_r(&time, &parts) == nullptr) return LogTime(0);
  std::snprintf(text.data(), text.size(), "%s %2d %02d:%02d:%02d", kMonths.at(static_cast<std::size_t>(parts.tm_mon)),
                parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
  return text.data();
}

bool IsTag(const std::string& tag) {
  return std::all_of(tag.begin(), tag.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_';
  });
}

}  // namespace

const kit::Form& SyslogModule::Fields() const {
  static const kit::Form form{"syslog", "System log", LineFields()};
  return form;
}

std::string ComposeLine(const kit::Event& event, const kit::Properties& properties) {
  const std::string tag = properties.Text("tag"), pattern = properties.Text("text");
  if (!IsTag(tag)) throw kit::SettingsError("tag", "A tag has letters, digits, dashes, dots and underscores only.");
  if (const std::string fault = FaultOfTemplate(pattern); !fault.empty()) throw kit::SettingsError("text", fault);
  if (!properties.Text("socket").starts_with('/')) {
    throw kit::SettingsError("socket", "The path must begin with a slash.");
  }
  const std::string severity = properties.Text(event.kind == kit::EventKind::Problem ? "problem" : "recovery");
  const int priority = CodeOf(kFacilities, properties.Text("facility")) * 8 + CodeOf(kSeverities, severity);
  const int64_t now = static_cast<int64_t>(std::time(nullptr));
  return '<' + std::to_string(priority) + '>' + LogTime(now) + ' ' + tag + ": " +
         kit::OneLine(Expand(pattern, FactsOf(event)), kLongestText);
}

std::string SyslogModule::Send(const kit::Event& event, const kit::Properties& properties) const {
  const std::string line = ComposeLine(event, properties);
  const std::string path = properties.Text("socket");
  int code = SendTo(path, SOCK_DGRAM, line);
  // A daemon that listens for connections tells lines apart by a NUL.
  if (code == EPROTOTYPE) code = SendTo(path, SOCK_STREAM, line + '\0');
  if (code == 0) return {};
  return "The log at " + path + " cannot be written: " + std::generic_category().message(code) + '.';
}

std::string SyslogModule::Judge(const kit::Properties& properties, std::string& key) const {
  return kit::Judged(key, [&] { return ComposeLine(SampleEvent(), properties); });
}

std::string SyslogModule::About() const {
  return "System log " QUARL_MODULE_VERSION
         "\n\nWrites alerts as lines of the system's log (syslog or the journal), with a facility and severities.";
}

}  // namespace quarl::alerts
