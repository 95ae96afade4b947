#pragma once

#include <optional>
#include <vector>

#include "kit/Properties.h"

namespace quarl::checks {

enum class Level { Ok, Warning, Critical };

/// The two limits of a number; one that is not above 0 is off.
struct Limits {
  double warning = 0;
  double critical = 0;
  bool low = false;  ///< a number below its limit is bad instead of one above it

  Level Of(double value) const;
  /// The limit that belongs to a level.
  double At(Level level) const { return level == Level::Critical ? critical : warning; }
};

struct LimitField {
  const char* label;
  double standard;
  const char* help = "0 for no limit.";
};

/// The fields of a number's two limits.
struct LimitPair {
  const char* key;  ///< that of the fields goes on with "Warning" and "Critical"
  LimitField warning, critical;
  const char* unit;
  double maximum;
  const char* group = "";
  kit::FieldType type = kit::FieldType::Integer;
  std::optional<kit::Condition> enabledWhen{};
};

std::vector<kit::Field> LimitFields(const LimitPair& pair);

/// What stands in the two fields of this key. Throws kit::SettingsError when the limits do not fit together.
Limits LimitsOf(const kit::Properties& properties, const std::string& key, bool low = false);

}  // namespace quarl::checks
