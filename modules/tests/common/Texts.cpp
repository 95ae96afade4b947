#include "tests/common/Texts.h"

#include <algorithm>

namespace quarl::checks {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Lower(std::string_view text) {
  std::string result(text);
  for (char& letter : result) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
  }
  return result;
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; });
}

}  // namespace quarl::checks
