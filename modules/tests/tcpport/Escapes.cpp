#include "Escapes.h"

#include <charconv>

#include "kit/Error.h"
#include "kit/Text.h"

namespace quarl::tcpport {
namespace {

constexpr std::size_t kHexDigits = 2;

char HexByte(std::string_view digits) {
  unsigned char value = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, value, 16);
  if (digits.size() != kHexDigits || read.ec != std::errc() || read.ptr != end)
    throw kit::Error("\"\\x\" needs two hexadecimal digits behind it.");
  return static_cast<char>(value);
}

}  // namespace

std::string Unescape(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const std::size_t slash = text.find('\\');
    bytes += text.substr(0, slash);
    if (slash == std::string_view::npos) break;
    text.remove_prefix(slash + 1);
    const char escape = text.empty() ? '\0' : text.front();
    constexpr std::string_view kLetters = "rnt\\";
    const std::size_t letter = text.empty() ? std::string_view::npos : kLetters.find(escape);
    if (escape == 'x') {
      bytes += HexByte(text.substr(1, kHexDigits));
      text.remove_prefix(1 + kHexDigits);
    } else if (letter != std::string_view::npos) {
      bytes += "\r\n\t\\"[letter];
      text.remove_prefix(1);
    } else {
      throw kit::Error("\"\\" + std::string(kit::CutUtf8(text, 1)) +
                       "\" is no escape; there are \\r, \\n, \\t, \\xNN and \\\\ for a backslash itself.");
    }
  }
  return bytes;
}

}  // namespace quarl::tcpport
