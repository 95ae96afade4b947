#pragma once

#include <QKeyEvent>

#include "store/Stores.h"
#include "tree/CommandPort.h"
#include "tree/ObjectTree.h"
#include "tree/SelectionPort.h"

namespace quarl::tree {

/// What the user's keys, right mouse button and label edits do in the object tree. What fails is thrown as Error.
/// User-interface thread only.
class TreeInteractions {
 public:
  /// All are borrowed and must outlive the object.
  TreeInteractions(ObjectTree& tree, store::Stores& stores, SelectionPort& selection, CommandPort& commands);

  /// Stores a text that the user typed for a node: the name of a test or alert; texts of other nodes are not stored.
  /// @return true, also when the store refuses: the node takes the text.
  bool AfterLabelEdit(const QString& key, const QString& text);
  /// Starts editing the text of the tree's selected node.
  void Rename();
  /// Delete (that of the keypad as well) removes the tree's selected node, F5 refreshes it.
  void KeyDown(const QKeyEvent& event);
  /// The right button shows the menu of the node at a point of the viewport. The node is not selected by that, and its
  /// commands stay as the selected key has them.
  void MouseUp(Qt::MouseButton button, const QPoint& position);
  /// Shows the menu of the tree's selected node, whose key becomes the selected key: the keyboard points at no other.
  void MenuKey();

 private:
  void Remove();
  void Choose(const QString& key);
  void PopUp(const QString& key, const QPoint& position);

  ObjectTree& tree_;
  store::Stores& stores_;
  SelectionPort& selection_;
  CommandPort& commands_;
};

}  // namespace quarl::tree
