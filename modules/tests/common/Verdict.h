#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kit/Performance.h"
#include "kit/TestModule.h"
#include "tests/common/Limits.h"

namespace quarl::checks {

/// Collects what a check found and makes the outcome of it: critical is a failed check; a warning is a passed one whose
/// text begins with "WARNING", or a failed one where the user wants that. Not for several threads.
class Verdict {
 public:
  /// Notes what is wrong, as a part of a sentence.
  void Blame(Level level, std::string reason);
  /// Compares a number with its limits: "response time above 500 ms".
  void Compare(const char* what, double value, const Limits& limits, const char* unit, int digits = 0);
  bool Blamed() const { return level_ != Level::Ok; }
  /// facts: what was found, good or bad.
  kit::CheckOutcome Outcome(const std::string& facts, bool warningFails) const;

 private:
  Level level_ = Level::Ok;
  std::vector<std::string> reasons_;
};

/// A number with this many digits behind the point, which is a point in every language.
std::string Fixed(double value, int digits);

/// A figure with the limits of a number, in the limits' unit. Those of a low number are left out: the form has upper
/// limits only.
kit::Figure FigureOf(std::string_view label, double value, int digits, std::string_view unit,
                     const Limits& limits = {});

}  // namespace quarl::checks
