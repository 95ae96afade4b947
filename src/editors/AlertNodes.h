#pragma once

#include "store/Stores.h"
#include "tree/ObjectTree.h"
#include "ui/MessageBoxes.h"

namespace quarl::editors {

/// Adds alerts, in the store and in the tree: the node stands in its owner's alerts folder, which is made when there
/// is none with its key, is selected and made visible; no node click follows. A refusal shows "Add alert failed!".
/// What was done before an error stays done. User-interface thread only.
class AlertNodes {
 public:
  AlertNodes(store::Stores& stores, tree::ObjectTree& tree, ui::MessageBoxes boxes);

  /// Throws Error.
  void AddServerAlertNode(qint32 idServer, qint32 idAlertType);
  /// Throws Error.
  void AddGroupAlertNode(qint32 idGroup, qint32 idAlertType);

 private:
  void AddNode(const QString& owner, qint32 idAlert, qint32 idAlertType, store::RecordSet alerts);
  bool IsRefused(qint32 idAlert) const;

  store::Stores& stores_;
  tree::ObjectTree& tree_;
  ui::MessageBoxes boxes_;
};

}  // namespace quarl::editors
