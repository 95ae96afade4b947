#include "base/NullToEmpty.h"

#include <QString>

namespace quarl {

QVariant NullToEmpty(const QVariant& value) {
  return value.isNull() ? QVariant(QString::fromLatin1("")) : value;
}

}  // namespace quarl
