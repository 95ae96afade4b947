#include "transfer/VisibleText.h"

#include <array>
#include <cstdio>
#include <tuple>

namespace quarl::transfer {
namespace {

/// Characters that act instead of showing, above the ASCII controls.
bool IsHidden(char32_t c) {
  return c == 0x7f || (c >= 0x80 && c <= 0x9f) || (c >= 0x2028 && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069);
}

std::string Escape(char32_t c) {
  std::array<char, 8> text{};
  std::ignore = std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(c));
  return text.data();
}

QString EscapeControl(char16_t c) {
  switch (c) {
    case u'\n':
      return QStringLiteral("\\n");
    case u'\r':
      return QStringLiteral("\\r");
    case u'\t':
      return QStringLiteral("\\t");
    default:
      return QString::fromStdString(Escape(c));
  }
}

}  // namespace

QString VisibleText(const QString& text) {
  QString visible;
  visible.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
    if (pair) {
      visible += c;
      visible += text[++i];
    } else if (c.unicode() < 0x20 || c.isSurrogate() || IsHidden(c.unicode())) {
      visible += EscapeControl(c.unicode());
    } else {
      visible += c;
    }
  }
  return visible;
}

std::string VisibleJson(const std::string& utf8) {
  std::string visible;
  visible.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(utf8[i + offset]); };
    // All hidden characters lie below U+2070: one byte (DEL), two bytes from C2, three from E2.
    if (byte(0) == 0x7f) {
      visible += Escape(0x7f);
    } else if (byte(0) == 0xc2 && i + 1 < utf8.size() && IsHidden(byte(1))) {
      visible += Escape(byte(1));
      i += 1;
    } else if (byte(0) == 0xe2 && i + 2 < utf8.size() &&
               IsHidden(static_cast<char32_t>(0x2000 + ((byte(1) & 0x3f) << 6) + (byte(2) & 0x3f)))) {
      visible += Escape(static_cast<char32_t>(0x2000 + ((byte(1) & 0x3f) << 6) + (byte(2) & 0x3f)));
      i += 2;
    } else {
      visible += utf8[i];
    }
  }
  return visible;
}

}  // namespace quarl::transfer
