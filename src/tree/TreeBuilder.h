#pragma once

#include <QString>
#include <functional>

#include "store/Stores.h"
#include "tree/ObjectTreeModel.h"

namespace quarl::tree {

/// Builds the object tree from the store, by one bulk read and one reset of the model. User-interface thread only.
class TreeBuilder {
 public:
  /// Shows the text of an error to the user.
  using Report = std::function<void(const QString& text)>;

  TreeBuilder(store::Stores& stores, ObjectTreeModel& model, Report report);

  /// Replaces the tree: the root group with its groups, each followed through AddGroupTree, then the root group's own
  /// servers and alerts, and the log node; the root group and all folders count as expanded. Never throws Error. What
  /// goes wrong in one group ends that group and is reported with the procedure's tag; what goes wrong elsewhere ends
  /// the whole and is reported bare. A part that the store could not read is reported once. What was built before
  /// stays, and the model holds it when Report is called.
  void LoadTree();

 private:
  store::Stores& stores_;
  ObjectTreeModel& model_;
  Report report_;
};

}  // namespace quarl::tree
