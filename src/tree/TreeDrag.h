#pragma once

#include <QMimeData>
#include <QTimer>

#include "base/InstallPaths.h"
#include "store/Stores.h"
#include "tree/ObjectTree.h"
#include "tree/TreeDragMark.h"

namespace quarl::tree {

/// Dragging servers and alerts in the object tree: servers to groups, alerts to servers and groups. It remembers the
/// node that a press may begin to drag, marks the node where it can be dropped, and scrolls near the tree's edges.
/// What fails is thrown as Error. User-interface thread only.
class TreeDrag {
 public:
  /// @param paths where the drag cursor is, "\DRAGMOVE.ico" in the application folder.
  /// @param scrollTimer runs while something is dragged near an edge; each of its ticks is to call ScrollTick().
  /// All are borrowed and must outlive the object.
  TreeDrag(ObjectTree& tree, store::Stores& stores, const InstallPaths& paths, QTimer& scrollTimer);

  /// The format of what is dragged: the key of a node, in UTF-8.
  static QString Format();

  void MouseDown(Qt::MouseButton button, const QPoint& position);
  /// Drags the node when the pointer has been moved far enough from the press, and returns when the drag is over.
  /// @return false after a drag.
  [[nodiscard]] bool MouseMove(Qt::MouseButtons buttons, const QPoint& position);
  /// Ends whatever the press began.
  void MouseUp();
  /// @return whether the node can be dropped there; it is marked then.
  [[nodiscard]] bool DragOver(const QMimeData& source, const QPoint& position);
  /// Moves the dragged node to the marked one, in the store and in the tree; nothing without a mark.
  void DragDrop();
  /// What is dragged has left the tree.
  void DragLeave();
  void ScrollTick();

  /// Where the dragged node would go; empty when nowhere.
  const QString& DropHighlight() const { return mark_.Key(); }

 private:
  static constexpr quint16 kDown = 1;
  static constexpr quint16 kUp = 65535;

  bool IsTarget(const QString& key) const;
  void Mark(const QPoint& position);
  void Scroll(int y);
  void Drag(const QString& key);
  QPixmap LoadPointer() const;

  ObjectTree& tree_;
  store::Stores& stores_;
  const InstallPaths& paths_;
  QTimer& scrollTimer_;
  TreeDragMark mark_;
  QString dragKey_;  // of the node that is or may be dragged
  QPoint pressed_;
  QPoint hovered_;
  quint16 direction_ = kDown;
};

}  // namespace quarl::tree
