#include "base/DateTimeText.h"

#include <QDateTime>

namespace quarl {

QString DateTimeText(qint64 msSinceEpoch) {
  return QDateTime::fromMSecsSinceEpoch(msSinceEpoch).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

}  // namespace quarl
