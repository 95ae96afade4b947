#include "apps/ServiceFiles.h"

#include <QFileInfo>

namespace quarl::apps {
namespace {

/// However the store is named, the files stand beside the one real file.
QString Beside(const store::StoreLocation& location, const QString& ending) {
  if (location.IsMemory()) return {};
  const QString real = QFileInfo(location.path).canonicalFilePath();
  return (real.isEmpty() ? location.path : real) + ending;
}

}  // namespace

QString ServiceLockFile(const store::StoreLocation& location) {
  return Beside(location, QStringLiteral(".service"));
}

QString ServiceMessagesFile(const store::StoreLocation& location) {
  return Beside(location, QStringLiteral(".service.log"));
}

}  // namespace quarl::apps
