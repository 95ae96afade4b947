#pragma once

#include <chrono>

#include "kit/Properties.h"

namespace quarl::ping {

struct Limits {
  double warning;
  double critical;
};

struct Settings {
  std::size_t count;
  std::chrono::milliseconds timeOut;  ///< of one echo
  Limits loss;                        ///< percent
  Limits roundTrip;                   ///< milliseconds, of the mean
  bool warningFails;
};

const kit::Form& PingForm();
Settings ReadSettings(const kit::Properties& properties);
/// A sentence when a warning lies above its critical limit, and that limit's key; "" when all is well.
std::string JudgeSettings(const Settings& settings, std::string& key);

}  // namespace quarl::ping
