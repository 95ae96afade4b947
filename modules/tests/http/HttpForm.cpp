#include "tests/common/Fields.h"
#include "tests/common/Limits.h"
#include "tests/http/HttpModule.h"

namespace quarl::checks {
namespace {

using kit::Field;
using kit::FieldType;

const char* const kRequest = "Request";
const char* const kConnection = "Connection";
const char* const kAnswer = "Answer";
const char* const kCertificate = "Certificate";

kit::Condition LogsIn() {
  return {"login", kit::Json::array({"basic", "digest"})};
}

kit::Condition LooksAtBody() {
  return {"content", kit::Json::array({"text", "noText", "pattern", "noPattern"})};
}

std::vector<Field> RequestFields() {
  return {
      {.key = "url",
       .label = "URL",
       .standard = "http://{address}/",
       .group = kRequest,
       .help = "{address} and {name} stand for the server's address and name.",
       .required = true,
       .longest = 2048},
      {.key = "method",
       .label = "Method",
       .type = FieldType::Choice,
       .standard = "GET",
       .group = kRequest,
       .choices = {{"GET", "GET"}, {"HEAD", "HEAD"}, {"POST", "POST"}, {"PUT", "PUT"}, {"OPTIONS", "OPTIONS"}}},
      {.key = "headers",
       .label = "Headers",
       .type = FieldType::List,
       .standard = kit::Json::array(),
       .group = kRequest,
       .help = "One header a line, as in \"Accept: application/json\"; {address} and {name} may stand in it."},
      {.key = "body",
       .label = "Body",
       .type = FieldType::Lines,
       .standard = "",
       .group = kRequest,
       .help = "Sent with POST and PUT. Say what it is with a header Content-Type.",
       .longest = 4096,
       .enabledWhen = kit::Condition{"method", kit::Json::array({"POST", "PUT"})}},
      {.key = "login",
       .label = "Login",
       .type = FieldType::Choice,
       .standard = "none",
       .group = kRequest,
       .choices = {{"none", "None"}, {"basic", "Basic"}, {"digest", "Digest"}}},
      {.key = "user", .label = "User", .standard = "", .group = kRequest, .longest = 256, .enabledWhen = LogsIn()},
      {.key = "password",
       .label = "Password",
       .type = FieldType::Secret,
       .standard = "",
       .group = kRequest,
       .help = "With Basic it goes over the network readable unless the URL is https.",
       .longest = 256,
       .enabledWhen = LogsIn()},
  };
}

std::vector<Field> ConnectionFields() {
  return {
      {.key = "toServer",
       .label = "Connect to the server's address whatever host the URL names",
       .type = FieldType::Boolean,
       .standard = true,
       .group = kConnection,
       .help = "The URL's host is still the one that is asked for (Host, TLS name). Without it the host is looked up."},
      {.key = "protocol",
       .label = "Protocol",
       .type = FieldType::Choice,
       .standard = "any",
       .group = kConnection,
       .help = "Which kind of address a looked-up host may have.",
       .choices = {{"any", "IPv4 or IPv6"}, {"4", "IPv4 only"}, {"6", "IPv6 only"}},
       .enabledWhen = kit::Condition{"toServer", false}},
      {.key = "follow",
       .label = "Follow redirections",
       .type = FieldType::Boolean,
       .standard = false,
       .group = kConnection,
       .help = "Then the last answer is judged. A redirection to another host leads to that host."},
      {.key = "redirects",
       .label = "At most",
       .type = FieldType::Integer,
       .standard = 5,
       .group = kConnection,
       .unit = "redirections",
       .minimum = 1,
       .maximum = 20,
       .enabledWhen = kit::Condition{"follow", true}},
      TimeOutField({.standard = 10000}, kConnection, "For the whole of it, redirections and body included."),
  };
}

std::vector<Field> AnswerFields() {
  return {
      {.key = "status",
       .label = "Expected status",
       .standard = "200-299",
       .group = kAnswer,
       .help = "Numbers and ranges, as in \"200-299,301\".",
       .required = true,
       .longest = 200},
      {.key = "content",
       .label = "The body",
       .type = FieldType::Choice,
       .standard = "any",
       .group = kAnswer,
       .choices = {{"any", "may be anything"},
                   {"text", "contains the text"},
                   {"noText", "does not contain the text"},
                   {"pattern", "matches the regular expression"},
                   {"noPattern", "does not match the regular expression"}}},
      {.key = "wanted",
       .label = "Text or expression",
       .standard = "",
       .group = kAnswer,
       .help = "Expressions are those of RE2: no back references, no look-around; (?s) lets a point match line ends.",
       .longest = 512,
       .enabledWhen = LooksAtBody()},
      {.key = "ignoreCase",
       .label = "Ignore upper and lower case",
       .type = FieldType::Boolean,
       .standard = false,
       .group = kAnswer,
       .enabledWhen = LooksAtBody()},
      {.key = "longestBody",
       .label = "Read at most",
       .type = FieldType::Integer,
       .standard = 1024,
       .group = kAnswer,
       .unit = "KiB",
       .help = "The transfer ends there, and what has been read is judged.",
       .minimum = 1,
       .maximum = 8192},
  };
}

std::vector<Field> TimeFields() {
  return LimitFields({.key = "time",
                      .warning = {"Warning above", 0, "Time of the whole request; 0 for no limit."},
                      .critical = {"Critical above", 0},
                      .unit = "ms",
                      .maximum = 60000,
                      .group = kAnswer});
}

std::vector<Field> CertificateFields() {
  return {
      {.key = "verify",
       .label = "Verify certificate and name",
       .type = FieldType::Boolean,
       .standard = true,
       .group = kCertificate,
       .help = "A certificate that is not trusted, is over or names another host fails the check."},
      {.key = "authorities",
       .label = "Trusted certificates",
       .standard = "",
       .group = kCertificate,
       .help = "A PEM file on the machine that makes the check; empty for the system's.",
       .enabledWhen = kit::Condition{"verify", true}},
  };
}

std::vector<Field> DaysFields() {
  return LimitFields({.key = "days",
                      .warning = {"Warning below", 21, "0 for no limit. Looked at with https only."},
                      .critical = {"Critical below", 7},
                      .unit = "days left",
                      .maximum = 3650,
                      .group = kCertificate});
}

}  // namespace

const kit::Form& HttpModule::Fields() const {
  static const kit::Form form = kit::FormOf("http", "HTTP(S) properties",
                                            {RequestFields(),
                                             ConnectionFields(),
                                             AnswerFields(),
                                             TimeFields(),
                                             CertificateFields(),
                                             DaysFields(),
                                             {WarningFailsField()}});
  return form;
}

std::string HttpModule::About() const {
  return "HTTP(S) " QUARL_MODULE_VERSION
         "\n\nAsks a web server for one page and judges the status, the text, the time and the days that the "
         "certificate has left.\n\nUses libcurl and RE2. Part of Quarl.";
}

}  // namespace quarl::checks
