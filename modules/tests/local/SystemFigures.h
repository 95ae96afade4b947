#pragma once

#include <array>
#include <optional>
#include <string>

namespace quarl::checks {

/// Of the last 1, 5 and 15 minutes.
using Load = std::array<double, 3>;

/// KiB.
struct Memory {
  double total = 0;
  double available = 0;
  double swapTotal = 0;
  double swapFree = 0;
};

/// Reads the kernel's text files. Thread-safe.
class SystemFigures {
 public:
  explicit SystemFigures(std::string folder = "/proc") : folder_(std::move(folder)) {}
  /// Both throw std::runtime_error when a file is not there or does not say it.
  Load ReadLoad() const;
  Memory ReadMemory() const;

 private:
  std::string folder_;
};

/// Processors that are in use, at least 1.
int ProcessorCount();

}  // namespace quarl::checks
