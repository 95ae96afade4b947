#pragma once

#include <QKeyEvent>
#include <QMimeData>
#include <QObject>

#include "tree/ObjectTree.h"

namespace quarl::tree {

/// The events of the object tree under the names of the procedures that deal with them. Positions are points of the
/// tree's viewport. Nothing here throws Error; a procedure that failed gives false.
class TreeEventPort {
 public:
  virtual ~TreeEventPort() = default;
  /// The user typed a text for a node. False: the node keeps the text that it had.
  virtual bool KVCTree_AfterLabelEdit(const QString& key, const QString& text) = 0;
  virtual void KVCTree_KeyDown(const QKeyEvent& event) = 0;
  /// The key of the keyboard that opens menus.
  virtual void KVCTree_MenuKey() = 0;
  virtual void KVCTree_MouseDown(Qt::MouseButton button, const QPoint& position) = 0;
  /// True: the button counts as held still. False after a drag, which takes the release away.
  virtual bool KVCTree_MouseMove(Qt::MouseButtons buttons, const QPoint& position) = 0;
  virtual void KVCTree_MouseUp(Qt::MouseButton button, const QPoint& position) = 0;
  /// Something is dragged over the tree. True: it can be dropped there.
  virtual bool KVCTree_DragOver(const QMimeData& source, const QPoint& position) = 0;
  virtual void KVCTree_DragDrop() = 0;
  /// What is dragged has left the tree.
  virtual void Form_DragOver() = 0;
};

/// Turns what Qt tells the tree and its viewport into calls of the port, each before the view deals with it itself.
/// Drags of other things than nodes are refused here. User-interface thread only.
class TreeEvents : public QObject {
 public:
  /// @param tree, port borrowed; must outlive the object.
  TreeEvents(ObjectTree& tree, TreeEventPort& port);

  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  bool OnMouse(const QMouseEvent& event);
  bool OnMove(const QMouseEvent& event);
  bool OnRelease(const QMouseEvent& event);
  void OnDrag(QDragMoveEvent& event, const QPoint& position);
  void OnDrop(QDropEvent& event);

  ObjectTree& tree_;
  TreeEventPort& port_;
  QPoint pressed_;
  bool moving_ = false;   // a drag may be running
  bool dropped_ = false;  // and has ended on the tree
};

}  // namespace quarl::tree
