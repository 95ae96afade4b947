#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace quarl::bench {

/// The same small picture under every key.
inline QIcon BenchIcon(const QString& key) {
  Q_UNUSED(key);
  QPixmap pixmap(16, 16);
  pixmap.fill(Qt::darkCyan);
  return QIcon(pixmap);
}

}  // namespace quarl::bench
