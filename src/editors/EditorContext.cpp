#include "editors/EditorContext.h"

#include "base/Error.h"
#include "base/NodeKey.h"

namespace quarl::editors {

qint32 IdBehind(NodeKind kind, const QString& key) {
  if (NodeKey::KindOf(key) != kind) {
    throw Error(QStringLiteral("\"%1\" is not the key of the object that the command is for.").arg(key.left(80)));
  }
  return NodeKey::IdOf(key);
}

}  // namespace quarl::editors
