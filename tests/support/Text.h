#pragma once

#include <QString>
#include <QStringList>
#include <ostream>

/// How test failures show texts.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

namespace quarl {

/// A text as tests write it, in UTF-8.
inline QString Q(const char* text) {
  return QString::fromUtf8(text);
}

/// The words of a text, which blanks part.
inline QStringList Words(const char* text) {
  return Q(text).split(u' ', Qt::SkipEmptyParts);
}

}  // namespace quarl
