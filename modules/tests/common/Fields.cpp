#include "tests/common/Fields.h"

namespace quarl::checks {

kit::Field WarningFailsField() {
  return {.key = kWarningFails,
          .label = "A warning counts as failed",
          .type = kit::FieldType::Boolean,
          .standard = false,
          .help = "Otherwise a check with a warning has passed and its text begins with WARNING."};
}

kit::Field TimeOutField(const TimeOut& timeOut, const char* group, const char* help) {
  return {.key = "timeOut",
          .label = "Time-out",
          .type = kit::FieldType::Integer,
          .standard = timeOut.standard,
          .group = group,
          .unit = "ms",
          .help = help,
          .minimum = static_cast<double>(timeOut.minimum),
          .maximum = static_cast<double>(timeOut.maximum)};
}

}  // namespace quarl::checks
