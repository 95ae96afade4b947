#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quarl::kit {

/// One figure of a check.
struct Figure {
  std::string_view label;
  double value = 0;
  std::string_view unit{};  ///< "ms", "s", "%", "B", "c" or ""
  std::optional<double> warning{};
  std::optional<double> critical{};
  std::optional<double> minimum{};
  std::optional<double> maximum{};
};

/// Performance data in the Monitoring Plugins' form, "rta=0.42ms;100;500;0 pl=0%;20;60;0;100".
class PerformanceData {
 public:
  /// A label that needs it is put in quotes. A value that is not finite is written as unknown ("U").
  void Add(const Figure& figure);
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace quarl::kit
