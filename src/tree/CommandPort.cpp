#include "tree/CommandPort.h"

namespace quarl::tree {

QString MenuOf(const QString& key) {
  switch (NodeKey::KindOf(key)) {
    case NodeKind::Group:
      return QStringLiteral("mGroup");
    case NodeKind::Server:
      return QStringLiteral("mServer");
    case NodeKind::Test:
      return QStringLiteral("mTest");
    case NodeKind::Alert:
      return QStringLiteral("mAlert");
    case NodeKind::Log:
      return QStringLiteral("mLog");
    default:
      return {};
  }
}

}  // namespace quarl::tree
