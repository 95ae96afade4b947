#pragma once

#include <QKeyEvent>

#include "tree/CommandPort.h"
#include "tree/ContentList.h"
#include "tree/ObjectTree.h"
#include "tree/SelectionPort.h"

namespace quarl::tree {

/// What the user's mouse and keys do in the detail list: rows become the selected key, servers are opened in the tree.
/// What fails is thrown as Error. User-interface thread only.
class ContentInteractions {
 public:
  /// All are borrowed and must outlive the object.
  ContentInteractions(ContentList& list, ObjectTree& tree, SelectionPort& selection, CommandPort& commands);

  /// Makes the selected row's key the selected key; that of a log row is empty.
  void Click();
  /// Opens the server of the selected row in the tree. Nothing for other rows.
  void DblClick();
  /// F5 refreshes the tree's selected node.
  void KeyDown(const QKeyEvent& event);
  /// The right button makes the key of the row at a point of the viewport the selected key and shows its menu.
  void MouseUp(Qt::MouseButton button, const QPoint& position);
  /// The same for the selected row.
  void MenuKey();

 private:
  void Choose(const QString& key);
  void PopUp(const QModelIndex& row, const QPoint& position);

  ContentList& list_;
  ObjectTree& tree_;
  SelectionPort& selection_;
  CommandPort& commands_;
};

}  // namespace quarl::tree
