#include "tests/local/SystemFigures.h"

#include <unistd.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "tests/common/Texts.h"

namespace quarl::checks {
namespace {

/// Nothing when the first word of a text is not a number of 0 or more.
std::optional<double> NumberAt(std::string_view text) {
  text = Trimmed(text);
  const std::string_view word = text.substr(0, text.find_first_of(" \t\n"));
  double value = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), value, std::chars_format::fixed);
  const bool whole = result.ec == std::errc() && result.ptr == word.data() + word.size();
  return whole && std::isfinite(value) && value >= 0 ? std::optional(value) : std::nullopt;
}

std::string WholeFile(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  if (!file || !(text << file.rdbuf())) throw std::runtime_error(path + " cannot be read.");
  return text.str();
}

double Line(const std::string& text, const std::string& name, const std::string& path) {
  const std::string label = '\n' + name + ':';
  const std::size_t at = ('\n' + text).find(label);
  const std::optional<double> value =
      at == std::string::npos ? std::nullopt : NumberAt(std::string_view(text).substr(at + label.size() - 1));
  if (!value) throw std::runtime_error(path + " does not say " + name + '.');
  return *value;
}

}  // namespace

Load SystemFigures::ReadLoad() const {
  const std::string path = folder_ + "/loadavg";
  std::istringstream words(WholeFile(path));
  Load load{};
  for (double& figure : load) {
    std::string word;
    words >> word;
    const std::optional<double> value = NumberAt(word);
    if (!value) throw std::runtime_error(path + " does not say the load.");
    figure = *value;
  }
  return load;
}

Memory SystemFigures::ReadMemory() const {
  const std::string path = folder_ + "/meminfo";
  const std::string text = WholeFile(path);
  Memory memory{Line(text, "MemTotal", path), Line(text, "MemAvailable", path), Line(text, "SwapTotal", path),
                Line(text, "SwapFree", path)};
  if (memory.total <= 0) throw std::runtime_error(path + " says that there is no memory.");
  return memory;
}

int ProcessorCount() {
  const long count = ::sysconf(_SC_NPROCESSORS_ONLN);
  return count < 1 ? 1 : static_cast<int>(count);
}

}  // namespace quarl::checks
