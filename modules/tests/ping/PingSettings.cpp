#include "PingSettings.h"

#include "tests/common/Fields.h"
#include "tests/common/Limits.h"

namespace quarl::ping {
namespace {

using kit::Field;
using kit::FieldType;

constexpr double kLongestRoundTrip = 60000;
constexpr const char* kEchoes = "Echoes";
constexpr const char* kLoss = "Lost echoes";
constexpr const char* kRoundTrip = "Mean round trip";

std::vector<Field> EchoFields() {
  return {
      {.key = "count",
       .label = "Number of echoes",
       .type = FieldType::Integer,
       .standard = 4,
       .group = kEchoes,
       .help = "How many echoes one check sends.",
       .minimum = 1,
       .maximum = 100},
      checks::TimeOutField({.standard = 1000, .minimum = 10}, kEchoes,
                           "An echo that is not answered within this time counts as lost."),
  };
}

std::vector<Field> LossLimits() {
  return checks::LimitFields(
      {.key = "loss",
       .warning = {"Warning from", 20, "From this share of lost echoes on, the check gives a warning."},
       .critical = {"Failed from", 60,
                    "From this share of lost echoes on, the check has failed. It always has when no echo is answered."},
       .unit = "%",
       .maximum = 100,
       .group = kLoss,
       .type = FieldType::Decimal});
}

std::vector<Field> RoundTripLimits() {
  return checks::LimitFields(
      {.key = "roundTrip",
       .warning = {"Warning from", 100, "From this mean round trip on, the check gives a warning."},
       .critical = {"Failed from", 500, "From this mean round trip on, the check has failed."},
       .unit = "ms",
       .maximum = kLongestRoundTrip,
       .group = kRoundTrip,
       .type = FieldType::Decimal});
}

}  // namespace

const kit::Form& PingForm() {
  static const kit::Form form = kit::FormOf(
      "ping", "Ping properties", {EchoFields(), LossLimits(), RoundTripLimits(), {checks::WarningFailsField()}});
  return form;
}

Settings ReadSettings(const kit::Properties& properties) {
  return {static_cast<std::size_t>(properties.Integer("count")),
          std::chrono::milliseconds(properties.Integer("timeOut")),
          {properties.Decimal("lossWarning"), properties.Decimal("lossCritical")},
          {properties.Decimal("roundTripWarning"), properties.Decimal("roundTripCritical")},
          properties.Flag(checks::kWarningFails)};
}

std::string JudgeSettings(const Settings& settings, std::string& key) {
  const struct {
    const Limits& limits;
    const char* key;
  } pairs[] = {{settings.loss, "lossCritical"}, {settings.roundTrip, "roundTripCritical"}};
  for (const auto& pair : pairs) {
    if (pair.limits.critical >= pair.limits.warning) continue;
    key = pair.key;
    return "This limit may not lie below the one of the warning.";
  }
  return {};
}

}  // namespace quarl::ping
