#include "shell/ProductInfo.h"

#include <QCoreApplication>
#include <QVersionNumber>

namespace quarl::shell {

QString ProductInfo::Version() {
  const QVersionNumber version = QVersionNumber::fromString(QCoreApplication::applicationVersion());
  return QStringLiteral("Version %1.%2.%3")
      .arg(version.majorVersion())
      .arg(version.minorVersion())
      .arg(version.microVersion());
}

QString ProductInfo::Copyright() {
  return QStringLiteral("Copyright © 2026 The Quarl authors");
}

}  // namespace quarl::shell
