#include "alerts/email/EmailModule.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <random>

#include "alerts/common/CertificateFields.h"
#include "alerts/common/EventFacts.h"
#include "kit/Error.h"
#include "kit/Text.h"

namespace quarl::alerts {
namespace {

using kit::FieldType;

constexpr const char* kSubject = "[Quarl] {subject}";
constexpr const char* kBody =
    "{message}\n"
    "\n"
    "Server: {server}\n"
    "Address: {address}\n"
    "Group: {group}\n"
    "Test: {test}\n"
    "Result: {text}\n"
    "State: {state}\n"
    "Time: {time}\n"
    "Problem since: {since}\n";

constexpr const char* kServer = "Mail server";

std::vector<kit::Field> ServerFields() {
  const char* const group = kServer;
  return {
      {.key = "host",
       .label = "Host",
       .standard = "localhost",
       .group = group,
       .help = "Name or address of the server that sends your mail.",
       .required = true,
       .longest = 255},
      {.key = "port",
       .label = "Port",
       .type = FieldType::Integer,
       .standard = 587,
       .group = group,
       .help = "587 for STARTTLS, 465 for TLS, 25 for a relay.",
       .minimum = 1,
       .maximum = 65535},
      {.key = "security",
       .label = "Encryption",
       .type = FieldType::Choice,
       .standard = "starttls",
       .group = group,
       .help = "With none, the mail and the password cross the network readable by everybody.",
       .choices = {{"starttls", "STARTTLS, required"}, {"tls", "TLS from the beginning"}, {"none", "None"}}},
  };
}

std::vector<kit::Field> DeliveryFields() {
  const char* const group = kServer;
  return {
      {.key = "login", .label = "Login", .group = group, .help = "Empty for a server that wants none."},
      {.key = "password", .label = "Password", .type = FieldType::Secret, .group = group},
      {.key = "limit",
       .label = "Time limit",
       .type = FieldType::Integer,
       .standard = 30,
       .group = group,
       .unit = "s",
       .help = "For the whole delivery of one mail.",
       .minimum = 1,
       .maximum = 50},
  };
}

std::vector<kit::Field> MailFields() {
  const std::string group = "Mail";
  return {
      {.key = "from",
       .label = "From",
       .group = group,
       .help = "For example quarl@example.org, or Quarl <quarl@example.org>.",
       .required = true,
       .longest = 400},
      {.key = "to",
       .label = "To",
       .type = FieldType::List,
       .group = group,
       .help = "One address a line.",
       .required = true,
       .longest = 400},
      {.key = "cc",
       .label = "Copies to",
       .type = FieldType::List,
       .group = group,
       .help = "One address a line.",
       .longest = 400},
      {.key = "subject",
       .label = "Subject",
       .standard = kSubject,
       .group = group,
       .help = "May contain " + PlaceholderNames() + '.',
       .required = true,
       .longest = 500},
      {.key = "body",
       .label = "Text",
       .type = FieldType::Lines,
       .standard = kBody,
       .group = group,
       .help = "The same. A line whose placeholders are all empty is left out.",
       .longest = 4000},
  };
}

/// The key of the first template that names an unknown fact, with the fault.
std::string FaultOfTemplates(const kit::Properties& properties, std::string& key) {
  for (const char* each : {"subject", "body"}) {
    key = each;
    if (std::string fault = FaultOfTemplate(properties.Text(each)); !fault.empty()) return fault;
  }
  return {};
}

/// A line of a template is left out when it has facts and all of them are empty.
std::string ExpandLines(const std::string& pattern, const std::vector<Fact>& facts) {
  std::string result;
  for (std::size_t at = 0; at < pattern.size();) {
    const std::size_t end = std::min(pattern.find('\n', at), pattern.size());
    const std::string line = pattern.substr(at, end - at);
    bool named = false, filled = false;
    const std::string text = Expand(line, facts, [&](const std::string& value) {
      named = true;
      filled = filled || !value.empty();
      return value;
    });
    if (filled || !named) result += text + '\n';
    at = end + 1;
  }
  return result;
}

std::string RandomId() {
  std::random_device device;
  return "once-" + std::to_string(device()) + '-' + std::to_string(device());
}

SmtpServer ServerOf(const kit::Properties& properties) {
  SmtpServer server;
  server.host = kit::OneLine(properties.Text("host"));
  server.port = static_cast<long>(properties.Integer("port"));
  const std::string security = properties.Text("security");
  server.security = security == "tls"    ? SmtpSecurity::Tls
                    : security == "none" ? SmtpSecurity::None
                                         : SmtpSecurity::StartTls;
  server.checkCertificate = properties.Flag("checkCertificate");
  server.authorities = properties.Text("authorities");
  server.login = properties.Text("login");
  server.password = properties.Text("password");
  server.limit = std::chrono::seconds(properties.Integer("limit"));
  return server;
}

bool IsHost(const std::string& host) {
  return !host.empty() && std::all_of(host.begin(), host.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' ||
           c == '_' || c == ':';
  });
}

std::vector<std::string> RecipientsOf(const Mail& mail) {
  std::vector<std::string> recipients;
  for (const auto* list : {&mail.to, &mail.cc}) {
    for (const MailAddress& mailbox : *list) {
      const bool known = std::find(recipients.begin(), recipients.end(), mailbox.address) != recipients.end();
      if (!known) recipients.push_back(mailbox.address);
    }
  }
  return recipients;
}

std::string Sentence(const SmtpOutcome& outcome) {
  if (outcome.refused.empty()) return outcome.fault;
  std::string refused;
  for (const SmtpRefusal& each : outcome.refused) {
    refused += (refused.empty() ? "" : ", ") + each.address + " (" + each.reply + ')';
  }
  return outcome.fault.empty() ? "Delivered, but refused for " + refused + '.' : "Refused for " + refused + '.';
}

}  // namespace

bool MailMemory::Has(const std::string& mail, const std::string& address) const {
  const std::scoped_lock lock(mutex_);
  return had_.contains({mail, address});
}

void MailMemory::Add(const std::string& mail, const std::string& address) {
  constexpr std::size_t kLargest = 10000;
  const std::scoped_lock lock(mutex_);
  if (had_.size() >= kLargest) had_.clear();
  had_.emplace(mail, address);
}

const kit::Form& EmailModule::Fields() const {
  static const kit::Form form =
      kit::FormOf("email", "E-mail",
                  {ServerFields(), CertificateFields(kServer, "Refuses a server that cannot prove its name."),
                   DeliveryFields(), MailFields()});
  return form;
}

Mail ComposeMail(const kit::Event& event, const kit::Properties& properties) {
  const std::vector<Fact> facts = FactsOf(event);
  std::string fault;
  Mail mail;
  mail.from = ReadMailAddress(properties.Text("from"), fault);
  if (!fault.empty()) throw kit::Error(fault);
  mail.to = ReadMailAddresses(properties.List("to"), fault);
  if (fault.empty()) mail.cc = ReadMailAddresses(properties.List("cc"), fault);
  if (!fault.empty()) throw kit::Error(fault);
  if (mail.to.empty()) throw kit::Error("No recipient is given.");
  mail.subject = Expand(properties.Text("subject"), facts);
  mail.body = ExpandLines(properties.Text("body"), facts);
  mail.date = event.time > 0 ? event.time : static_cast<int64_t>(std::time(nullptr));
  const std::string domain = '@' + mail.from.Domain();
  mail.id = IdPart(event.messageId.empty() ? RandomId() : event.messageId) + domain;
  const bool threaded = event.kind != kit::EventKind::Test && !event.problemId.empty();
  if (threaded) mail.thread = "problem." + IdPart(event.problemId) + domain;
  mail.headers = {{"Auto-Submitted", "auto-generated"},
                  {"X-Auto-Response-Suppress", "All"},
                  {"X-Quarl-State", StateWord(event.kind)}};
  return mail;
}

std::string EmailModule::Send(const kit::Event& event, const kit::Properties& properties) const {
  const Mail mail = ComposeMail(event, properties);
  const std::string text = MailText(mail);
  const SmtpServer server = ServerOf(properties);
  const std::string known = server.host + ':' + std::to_string(server.port) + ' ' + mail.id + ' ' +
                            std::to_string(std::hash<std::string>()(text));
  std::vector<std::string> pending = RecipientsOf(mail);
  if (event.kind != kit::EventKind::Test) {
    std::erase_if(pending, [&](const std::string& address) { return memory_.Has(known, address); });
  }
  if (pending.empty()) return {};
  const SmtpOutcome outcome = DeliverMail(server, mail.from.address, pending, text);
  for (const std::string& address : pending) {
    const bool refused = std::any_of(outcome.refused.begin(), outcome.refused.end(),
                                     [&](const SmtpRefusal& each) { return each.address == address; });
    if (outcome.fault.empty() && !refused) memory_.Add(known, address);
  }
  return Sentence(outcome);
}

std::string EmailModule::Judge(const kit::Properties& properties, std::string& key) const {
  key = "host";
  if (!IsHost(kit::OneLine(properties.Text("host")))) return "The host is a name or an address.";
  key = "login";
  if (properties.Text("login").empty() && !properties.Text("password").empty()) return "A password needs a login.";
  key = "from";
  std::string fault;
  std::ignore = ReadMailAddress(properties.Text("from"), fault);
  for (const char* list : {"to", "cc"}) {
    if (!fault.empty()) return fault;
    key = list;
    const std::vector<MailAddress> mailboxes = ReadMailAddresses(properties.List(list), fault);
    if (fault.empty() && mailboxes.empty() && key == "to") fault = "At least one address is needed.";
  }
  return fault.empty() ? FaultOfTemplates(properties, key) : fault;
}

std::string EmailModule::About() const {
  return "E-mail " QUARL_MODULE_VERSION
         "\n\nSends alerts as mails through an SMTP server, with STARTTLS or TLS and a login. The mails about a "
         "problem "
         "and its recovery stand in one thread.";
}

}  // namespace quarl::alerts
