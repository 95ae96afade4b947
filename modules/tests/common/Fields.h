#pragma once

#include "kit/Form.h"

namespace quarl::checks {

/// The key and the field "A warning counts as failed".
inline constexpr const char* kWarningFails = "warningFails";
kit::Field WarningFailsField();

/// Milliseconds.
struct TimeOut {
  int standard;
  int minimum = 100;
  int maximum = 60000;
};
/// The field "Time-out", of the key "timeOut".
kit::Field TimeOutField(const TimeOut& timeOut, const char* group, const char* help);

}  // namespace quarl::checks
