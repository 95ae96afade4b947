#include "tests/common/Limits.h"

#include <cmath>

#include "kit/SettingsError.h"

namespace quarl::checks {
namespace {

std::string WarningKey(const std::string& key) {
  return key + "Warning";
}

std::string CriticalKey(const std::string& key) {
  return key + "Critical";
}

kit::Field FieldOf(const LimitPair& pair, std::string key, const LimitField& limit) {
  const bool whole = pair.type == kit::FieldType::Integer;
  return {.key = std::move(key),
          .label = limit.label,
          .type = pair.type,
          .standard = whole ? kit::Json(std::lround(limit.standard)) : kit::Json(limit.standard),
          .group = pair.group,
          .unit = pair.unit,
          .help = limit.help,
          .maximum = pair.maximum,
          .enabledWhen = pair.enabledWhen};
}

}  // namespace

Level Limits::Of(double value) const {
  const auto reached = [&](double limit) { return limit > 0 && (low ? value < limit : value > limit); };
  if (reached(critical)) return Level::Critical;
  return reached(warning) ? Level::Warning : Level::Ok;
}

std::vector<kit::Field> LimitFields(const LimitPair& pair) {
  return {FieldOf(pair, WarningKey(pair.key), pair.warning), FieldOf(pair, CriticalKey(pair.key), pair.critical)};
}

Limits LimitsOf(const kit::Properties& properties, const std::string& key, bool low) {
  const Limits limits{properties.Decimal(WarningKey(key)), properties.Decimal(CriticalKey(key)), low};
  if (limits.warning <= 0 || limits.critical <= 0) return limits;
  if (low && limits.critical > limits.warning) {
    throw kit::SettingsError(CriticalKey(key), "The critical limit must not be above the one for a warning.");
  }
  if (!low && limits.critical < limits.warning) {
    throw kit::SettingsError(CriticalKey(key), "The critical limit must not be below the one for a warning.");
  }
  return limits;
}

}  // namespace quarl::checks
