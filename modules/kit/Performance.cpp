#include "kit/Performance.h"

#include <charconv>
#include <cmath>

#include "kit/Text.h"

namespace quarl::kit {
namespace {

constexpr int kDigits = 10;

std::string Label(std::string_view label) {
  std::string name = OneLine(label);
  for (char& character : name)
    if (character == '=' || character == '|') character = '_';
  if (name.find_first_of(" '") == std::string::npos) return name;
  std::string quoted = "'";
  for (const char character : name) quoted += character == '\'' ? std::string("''") : std::string(1, character);
  return quoted + "'";
}

// std::to_chars knows no locale: the decimal point stays a point.
std::string Number(double number) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::general, kDigits).ptr;
  std::string written(text, end);
  if (written.find('e') == std::string::npos) return written;
  const auto fixed = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6);
  return fixed.ec == std::errc() ? std::string(text, fixed.ptr) : written;
}

}  // namespace

void PerformanceData::Add(const Figure& figure) {
  if (!text_.empty()) text_ += ' ';
  text_ += Label(figure.label) + '=';
  text_ += std::isfinite(figure.value) ? Number(figure.value).append(figure.unit) : "U";
  std::string separators;
  for (const auto& limit : {figure.warning, figure.critical, figure.minimum, figure.maximum}) {
    separators += ';';
    if (!limit) continue;
    text_ += separators + Number(*limit);
    separators.clear();
  }
}

}  // namespace quarl::kit
