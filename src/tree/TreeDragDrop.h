#pragma once

#include "store/Stores.h"
#include "tree/ObjectTree.h"

namespace quarl::tree {

/// What a drop in the object tree does: first in the store, whose refusal is not looked at, then in the tree. Errors of
/// either are thrown; what was done before stays done. User-interface thread only.
class TreeDragDrop {
 public:
  TreeDragDrop(ObjectTree& tree, store::Stores& stores) : tree_(tree), stores_(stores) {}

  /// Gives a server to a group. Nothing when the server's group has the same name as that one.
  void MoveServer(const QString& server, const QString& group);
  /// Gives an alert to a server or group, whose last alert it becomes. An alerts folder is made where it is needed, and
  /// removed where it is empty.
  void MoveAlert(const QString& alert, const QString& owner);

 private:
  ObjectTree& tree_;
  store::Stores& stores_;
};

}  // namespace quarl::tree
