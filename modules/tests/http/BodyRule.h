#pragma once

#include <string>

#include "tests/common/Verdict.h"

namespace quarl::checks {

/// What must, or must not, stand in the body of an answer.
struct BodyRule {
  enum class Kind { None, Text, Pattern };
  Kind kind = Kind::None;
  bool absent = false;  ///< it must not be there
  bool ignoreCase = false;
  std::string wanted{};

  /// "" when it can be applied, else one sentence.
  std::string Defect() const;
  /// Blames a body that breaks the rule. cut: the body went on behind what is here. Throws std::runtime_error when it
  /// cannot be told. Patterns need time in proportion to the body's length whatever they are.
  void Apply(const std::string& body, bool cut, Verdict& verdict) const;
};

}  // namespace quarl::checks
