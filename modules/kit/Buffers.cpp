#include "kit/Buffers.h"

#include <algorithm>

#include "kit/Text.h"

namespace quarl::kit {

std::string_view TextOf(const QuarlBuffer& buffer) {
  if (buffer.text == nullptr || buffer.size == 0) return {};
  const std::string_view all(buffer.text, buffer.size - 1);
  return all.substr(0, all.find('\0'));
}

std::string_view TextOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

void WriteText(const QuarlBuffer& buffer, std::string_view text) {
  if (buffer.text == nullptr || buffer.size == 0) return;
  const std::string_view fitting = CutUtf8(text, buffer.size - 1);
  *std::copy(fitting.begin(), fitting.end(), buffer.text) = '\0';
}

void WriteFilled(const QuarlBuffer& buffer, std::string_view text, char filler) {
  if (buffer.text == nullptr || buffer.size == 0) return;
  const std::string_view fitting = CutUtf8(text, buffer.size - 1);
  char* const end = buffer.text + buffer.size - 1;
  std::fill(std::copy(fitting.begin(), fitting.end(), buffer.text), end, filler);
  *end = '\0';
}

}  // namespace quarl::kit
