#include "kit/Text.h"

#include <algorithm>

namespace quarl::kit {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

/// The next character of a text: its bytes and its number; number -1 where they are no UTF-8.
struct Character {
  std::string_view bytes;
  long number;
};

// Length of the sequence that a first byte announces, and the lowest number that may be written with it.
struct Shape {
  std::size_t length;
  long lowest;
  unsigned char payload;
};

Shape ShapeOf(unsigned char first) {
  if (first < 0x80) return {1, 0, 0x7f};
  if (first >= 0xc2 && first < 0xe0) return {2, 0x80, 0x1f};
  if (first >= 0xe0 && first < 0xf0) return {3, 0x800, 0x0f};
  if (first >= 0xf0 && first < 0xf5) return {4, 0x10000, 0x07};
  return {0, 0, 0};
}

Character First(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const Shape shape = ShapeOf(first);
  if (shape.length == 0) return {text.substr(0, 1), -1};
  long number = first & shape.payload;
  for (std::size_t at = 1; at < shape.length; ++at) {
    const unsigned char byte = at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
    if ((byte & 0xc0) != 0x80) return {text.substr(0, at), -1};
    number = number << 6 | (byte & 0x3f);
  }
  const bool possible = number >= shape.lowest && number <= 0x10ffff && (number < 0xd800 || number > 0xdfff);
  return {text.substr(0, shape.length), possible ? number : -1};
}

// Characters that a line for people does not show as they are: controls, line ends, changes of direction.
bool IsBlankOrHostile(long number) {
  return number <= 0x20 || (number >= 0x7f && number <= 0xa0) || number == 0x61c || number == 0x200e ||
         number == 0x200f || (number >= 0x2028 && number <= 0x202e) || (number >= 0x2066 && number <= 0x2069) ||
         number == 0xfeff;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character next = First(text);
    if (next.number < 0) return false;
    text.remove_prefix(next.bytes.size());
  }
  return true;
}

std::string ToUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Character next = First(bytes);
    text += next.number <= 0 ? kReplacement : next.bytes;
    bytes.remove_prefix(next.bytes.size());
  }
  return text;
}

std::string_view CutUtf8(std::string_view text, std::size_t longest) {
  if (text.size() <= longest) return text;
  while (longest > 0 && (static_cast<unsigned char>(text[longest]) & 0xc0) == 0x80) --longest;
  return text.substr(0, longest);
}

std::string OneLine(std::string_view bytes, std::size_t longest) {
  std::string line;
  line.reserve(std::min(bytes.size(), longest + 8));
  bool blank = false;
  while (!bytes.empty() && line.size() <= longest) {
    const auto end = std::find_if_not(bytes.begin(), bytes.end(), [](char c) { return c > ' ' && c <= '~'; });
    const auto plain = static_cast<std::size_t>(end - bytes.begin());
    const Character next = plain > 0 ? Character{bytes.substr(0, plain), 0x21} : First(bytes);
    bytes.remove_prefix(next.bytes.size());
    if (next.number >= 0 && IsBlankOrHostile(next.number)) {
      blank = !line.empty();
      continue;
    }
    if (blank) line += ' ';
    blank = false;
    line += next.number < 0 ? kReplacement : next.bytes;
  }
  if (line.size() <= longest) return line;
  const std::size_t room = longest > kEllipsis.size() ? longest - kEllipsis.size() : 0;
  line.resize(CutUtf8(line, room).size());
  return line.append(kEllipsis);
}

std::string WithoutSecrets(std::string text, const std::vector<std::string>& secrets) {
  constexpr std::string_view kStars = "***";
  for (const std::string& secret : secrets) {
    for (std::size_t at = 0; !secret.empty() && (at = text.find(secret, at)) != std::string::npos;) {
      text.replace(at, secret.size(), kStars);
      at += kStars.size();
    }
  }
  return text;
}

}  // namespace quarl::kit
