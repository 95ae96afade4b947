#include "tests/http/BodyRule.h"

#include <re2/re2.h>

#include <stdexcept>

#include "kit/Text.h"

namespace quarl::checks {
namespace {

/// Steps of the slowest search that is still made, about a second: instructions of the pattern times bytes.
constexpr double kMostSteps = 2.5e8;

RE2::Options OptionsOf(const BodyRule& rule) {
  RE2::Options options;
  options.set_case_sensitive(!rule.ignoreCase);
  options.set_literal(rule.kind == BodyRule::Kind::Text);
  options.set_max_mem(1 << 18);
  options.set_log_errors(false);
  return options;
}

}  // namespace

std::string BodyRule::Defect() const {
  if (kind == Kind::None) return {};
  if (wanted.empty()) return "The text to look for is empty.";
  const RE2 pattern(wanted, OptionsOf(*this));
  return pattern.ok() ? std::string() : "The regular expression is not good: " + kit::OneLine(pattern.error()) + '.';
}

void BodyRule::Apply(const std::string& body, bool cut, Verdict& verdict) const {
  if (kind == Kind::None) return;
  const RE2 pattern(wanted, OptionsOf(*this));
  if (!pattern.ok()) throw std::runtime_error(Defect());
  if (pattern.ProgramSize() * static_cast<double>(body.size()) > kMostSteps) {
    throw std::runtime_error("The regular expression is too large for a body of this length.");
  }
  const bool found = RE2::PartialMatch(body, pattern);
  const std::string what =
      kind == Kind::Text ? "text \"" + kit::OneLine(wanted, 100) + '"' : "pattern " + kit::OneLine(wanted, 100);
  if (absent && !found && cut) {
    throw std::runtime_error("The body is longer than what is read; whether it is free of the " + what +
                             " cannot be told.");
  }
  if (found != absent) return;
  verdict.Blame(Level::Critical, what + (absent ? " is in the body" : " is not in the body"));
}

}  // namespace quarl::checks
