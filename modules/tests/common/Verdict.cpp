#include "tests/common/Verdict.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace quarl::checks {

void Verdict::Blame(Level level, std::string reason) {
  level_ = std::max(level_, level);
  reasons_.push_back(std::move(reason));
}

void Verdict::Compare(const char* what, double value, const Limits& limits, const char* unit, int digits) {
  const Level level = limits.Of(value);
  if (level == Level::Ok) return;
  Blame(level, std::string(what) + (limits.low ? " below " : " above ") + Fixed(limits.At(level), digits) + ' ' + unit);
}

kit::CheckOutcome Verdict::Outcome(const std::string& facts, bool warningFails) const {
  kit::CheckOutcome outcome;
  const bool failed = level_ == Level::Critical || (level_ == Level::Warning && warningFails);
  outcome.state = failed ? kit::State::Failed : kit::State::Passed;
  outcome.text = level_ == Level::Warning ? "WARNING: " + facts : facts;
  for (std::size_t i = 0; i < reasons_.size(); ++i) outcome.text += (i == 0 ? " - " : "; ") + reasons_[i];
  return outcome;
}

std::string Fixed(double value, int digits) {
  std::array<char, 400> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits);
  return result.ec == std::errc() ? std::string(text.data(), result.ptr) : std::string("0");
}

kit::Figure FigureOf(std::string_view label, double value, int digits, std::string_view unit, const Limits& limits) {
  const double scale = std::pow(10, digits);
  kit::Figure figure{.label = label, .value = std::round(value * scale) / scale, .unit = unit};
  if (!limits.low && limits.warning > 0) figure.warning = limits.warning;
  if (!limits.low && limits.critical > 0) figure.critical = limits.critical;
  return figure;
}

}  // namespace quarl::checks
