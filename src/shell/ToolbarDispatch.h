#pragma once

#include <QString>

namespace quarl::store {
class Stores;
}
namespace quarl::tree {
class ObjectTree;
class SelectionPort;
}  // namespace quarl::tree

namespace quarl::shell {

struct MainControls;

/// What the toolbar's buttons and their drop-down entries do: mostly what an item of the menu bar does.
class ToolbarDispatch {
 public:
  ToolbarDispatch(const MainControls& controls, store::Stores& stores, tree::SelectionPort& selection)
      : controls_(controls), stores_(stores), selection_(selection) {}
  /// Keys are matched without case; a key without action does nothing. Throws StoreError.
  void ButtonClick(const QString& key);
  /// Only the entry's place counts, and whether its key is that of a test type or of an alert type.
  /// @param index of the entry, from 1.
  void ButtonMenuClick(const QString& key, int index);

 private:
  void Refresh();
  void Properties();
  void Choose(const QString& menuArray, int index) const;

  const MainControls& controls_;
  store::Stores& stores_;
  tree::SelectionPort& selection_;
};

}  // namespace quarl::shell
