#include "ui/OneLine.h"

namespace quarl::ui {

QString OneLine(const QString& text, qsizetype limit) {
  QString line = text.first(qMin(text.size(), limit));
  if (text.size() > limit) {
    if (line.back().isHighSurrogate()) line.chop(1);
    line += QChar(0x2026);
  }
  for (QChar& character : line) {
    if (character.isSpace()) character = u' ';
  }
  return line;
}

}  // namespace quarl::ui
