#include "tests/common/Fields.h"
#include "tests/monitoringplugin/PluginModule.h"

namespace quarl::checks {
namespace {

using kit::Field;
using kit::FieldType;

const char* const kCommand = "Command";
const char* const kEnvironment = "Environment";

kit::Form MakeForm() {
  return {"monitoringplugin",
          "Monitoring-Plugins command properties",
          {
              {.key = "program",
               .label = "Program",
               .standard = "",
               .group = kCommand,
               .help = "A path that begins with a slash, or the name of a program in /usr/lib/nagios/plugins; on the "
                       "machine that makes the check.",
               .required = true},
              {.key = "arguments",
               .label = "Arguments",
               .type = FieldType::List,
               .standard = kit::Json::array({"-H", "{address}"}),
               .group = kCommand,
               .help = "One argument a line, handed over as it is, without a shell. {address} and {name} stand for the "
                       "server's address and name."},
              TimeOutField({.standard = 10000, .maximum = 300000}, kCommand,
                           "Then the program is ended with everything that it started, and the state is unknown."),
              {.key = "environment",
               .label = "Variables",
               .type = FieldType::List,
               .standard = kit::Json::array(),
               .group = kEnvironment,
               .help = "One NAME=VALUE a line. {secret} and {secret2} stand for the texts below, which other users of "
                       "the machine would see in an argument."},
              {.key = "secret",
               .label = "Secret",
               .type = FieldType::Secret,
               .standard = "",
               .group = kEnvironment,
               .help = "A password or a key for {secret} in a variable.",
               .longest = 512},
              {.key = "secret2",
               .label = "Second secret",
               .type = FieldType::Secret,
               .standard = "",
               .group = kEnvironment,
               .longest = 512},
              WarningFailsField(),
          }};
}

}  // namespace

const kit::Form& PluginModule::Fields() const {
  static const kit::Form form = MakeForm();
  return form;
}

std::string PluginModule::About() const {
  return "Monitoring-Plugins command " QUARL_MODULE_VERSION
         "\n\nRuns any program of the Monitoring Plugins' convention and takes over its state, its text and its "
         "performance data.\n\nPart of Quarl.";
}

}  // namespace quarl::checks
