#include "alerts/common/CertificateFields.h"
#include "alerts/common/EventFacts.h"
#include "alerts/webhook/WebhookModule.h"

namespace quarl::alerts {
namespace {

using kit::Field;
using kit::FieldType;

constexpr const char* kConnection = "Connection";
constexpr const char* kTemplate = R"({
  "text": "{state}: {subject}",
  "server": "{server}"
})";

std::vector<Field> ReceiverFields() {
  const std::string group = "Receiver";
  return {
      {.key = "url",
       .label = "URL",
       .group = group,
       .help = "Begins with https:// or http://. {secret} in it stands for the secret part below.",
       .required = true,
       .longest = 2000},
      {.key = "urlSecret",
       .label = "Secret part of the URL",
       .type = FieldType::Secret,
       .group = group,
       .help = "For services whose URL is itself the password."},
      {.key = "method",
       .label = "Method",
       .type = FieldType::Choice,
       .standard = "POST",
       .group = group,
       .choices = {{"POST", "POST"}, {"PUT", "PUT"}}},
      {.key = "token",
       .label = "Bearer token",
       .type = FieldType::Secret,
       .group = group,
       .help = "Sent as \"Authorization: Bearer ...\".",
       .longest = 4000},
      {.key = "headers",
       .label = "Headers",
       .type = FieldType::List,
       .group = group,
       .help = "Further ones, \"Name: value\", one a line."},
      {.key = "secretHeader",
       .label = "Secret header",
       .group = group,
       .help = "Name of a header whose value is kept with the passwords.",
       .longest = 100},
      {.key = "secretValue", .label = "Its value", .type = FieldType::Secret, .group = group, .longest = 4000},
  };
}

std::vector<Field> ConnectionFields() {
  const char* const group = kConnection;
  return {
      {.key = "follow",
       .label = "Follow redirects",
       .type = FieldType::Boolean,
       .standard = false,
       .group = group,
       .help = "Within the same host, with the same method and body."},
      {.key = "attemptLimit",
       .label = "Time limit",
       .type = FieldType::Integer,
       .standard = 10,
       .group = group,
       .unit = "s",
       .help = "For one attempt. After failures that pass by there are up to three more within 30 seconds.",
       .minimum = 1,
       .maximum = 30},
  };
}

std::vector<Field> BodyFields() {
  const std::string group = "Body";
  return {
      {.key = "body",
       .label = "Content",
       .type = FieldType::Choice,
       .standard = "facts",
       .group = group,
       .help = "All facts as a JSON object with the keys of the documentation, or a text of your own.",
       .choices = {{"facts", "All facts, JSON"}, {"json", "Own JSON"}, {"text", "Own text"}}},
      {.key = "template",
       .label = "Own text",
       .type = FieldType::Lines,
       .standard = kTemplate,
       .group = group,
       .help = "May contain " + PlaceholderNames() + "; in JSON they belong between quotes.",
       .longest = 6000,
       .enabledWhen = kit::Condition{"body", kit::Json::array({"json", "text"})}},
      {.key = "contentType",
       .label = "Content type",
       .standard = "text/plain; charset=utf-8",
       .group = group,
       .longest = 200,
       .enabledWhen = kit::Condition{"body", "text"}},
  };
}

}  // namespace

const kit::Form& WebhookModule::Fields() const {
  static const kit::Form form =
      kit::FormOf("webhook", "Webhook",
                  {ReceiverFields(), CertificateFields(kConnection, "Refuses a receiver that cannot prove its name."),
                   ConnectionFields(), BodyFields()});
  return form;
}

std::string WebhookModule::About() const {
  return "Webhook " QUARL_MODULE_VERSION
         "\n\nHands alerts to a web service as JSON, with a key by which the service can tell a repeated message. "
         "Uses libcurl.";
}

}  // namespace quarl::alerts
