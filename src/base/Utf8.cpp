#include "base/Utf8.h"

namespace quarl {

QString FromUtf8(std::string_view utf8) {
  QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
  if (utf8.starts_with("\xef\xbb\xbf")) text.prepend(QChar::ByteOrderMark);
  return text;
}

}  // namespace quarl
