#include "tests/common/Fields.h"
#include "tests/common/Limits.h"
#include "tests/dns/DnsAnswer.h"
#include "tests/dns/DnsModule.h"

namespace quarl::checks {
namespace {

using kit::Field;
using kit::FieldType;

const char* const kQuestion = "Question";
const char* const kServer = "DNS server";
const char* const kAnswer = "Answer";

std::vector<kit::Choice> TypeChoices() {
  std::vector<kit::Choice> choices;
  for (const DnsType& type : DnsTypes()) choices.push_back({type.name, type.name});
  return choices;
}

std::vector<Field> QuestionFields() {
  return {
      {.key = "name",
       .label = "Name",
       .standard = "{name}",
       .group = kQuestion,
       .help = "{name} and {address} stand for the server's name and address. For PTR an address may stand here.",
       .required = true,
       .longest = 253},
      {.key = "type",
       .label = "Record type",
       .type = FieldType::Choice,
       .standard = "A",
       .group = kQuestion,
       .choices = TypeChoices()},
      {.key = "recursion",
       .label = "Ask for recursion",
       .type = FieldType::Boolean,
       .standard = true,
       .group = kQuestion,
       .help = "Without it the server answers from what it holds itself."},
  };
}

std::vector<Field> ServerFields() {
  return {
      {.key = "ask",
       .label = "Ask",
       .type = FieldType::Choice,
       .standard = "server",
       .group = kServer,
       .choices = {{"server", "the tested server"},
                   {"system", "the name servers of this machine"},
                   {"other", "another server"}}},
      {.key = "other",
       .label = "Address",
       .standard = "",
       .group = kServer,
       .help = "IPv4 or IPv6 address.",
       .longest = 45,
       .enabledWhen = kit::Condition{"ask", "other"}},
      {.key = "port",
       .label = "Port",
       .type = FieldType::Integer,
       .standard = 53,
       .group = kServer,
       .help = "Of the tested or the other server.",
       .minimum = 1,
       .maximum = 65535},
      {.key = "tcp",
       .label = "Ask over TCP",
       .type = FieldType::Boolean,
       .standard = false,
       .group = kServer,
       .help = "Otherwise UDP, and TCP when the answer does not fit."},
      TimeOutField({.standard = 5000}, kServer,
                   "For the whole of it; after a third of it the question is asked once more."),
  };
}

std::vector<Field> AnswerFields() {
  return {
      {.key = "match",
       .label = "The records",
       .type = FieldType::Choice,
       .standard = "any",
       .group = kAnswer,
       .choices = {{"any", "contain one of the expected"},
                   {"all", "contain all of the expected"},
                   {"exactly", "are exactly the expected"},
                   {"none", "contain none of the expected"}}},
      {.key = "expected",
       .label = "Expected",
       .type = FieldType::List,
       .standard = kit::Json::array(),
       .group = kAnswer,
       .help = "One record a line, as in \"192.0.2.1\" or \"10 mail.example.org\"; {name} and {address} may stand in "
               "it. Empty: there must be some record, or with \"none\" no record at all."},
  };
}

std::vector<Field> TimeFields() {
  return LimitFields({.key = "time",
                      .warning = {"Warning above", 0},
                      .critical = {"Critical above", 0},
                      .unit = "ms",
                      .maximum = 60000,
                      .group = kAnswer});
}

}  // namespace

const kit::Form& DnsModule::Fields() const {
  static const kit::Form form =
      kit::FormOf("dns", "DNS look-up properties",
                  {QuestionFields(), ServerFields(), AnswerFields(), TimeFields(), {WarningFailsField()}});
  return form;
}

std::string DnsModule::About() const {
  return "DNS look-up " QUARL_MODULE_VERSION
         "\n\nAsks a DNS server for the records of a name and compares them with the expected ones.\n\nUses c-ares. "
         "Part of Quarl.";
}

}  // namespace quarl::checks
