#include "tree/TreeEvents.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <utility>

#include "tree/TreeDrag.h"

namespace quarl::tree {

TreeEvents::TreeEvents(ObjectTree& tree, TreeEventPort& port) : tree_(tree), port_(port) {
  tree.Nodes().SetEditHandler(
      [this](const QString& key, const QString& text) { return port_.KVCTree_AfterLabelEdit(key, text); });
  // The view itself takes what is dragged over its scroll bars and frame.
  tree.setAcceptDrops(true);
  tree.viewport()->setAcceptDrops(true);
  tree.installEventFilter(this);
  tree.viewport()->installEventFilter(this);
}

bool TreeEvents::eventFilter(QObject* target, QEvent* event) {
  const QPoint offset = target == &tree_ ? tree_.viewport()->pos() : QPoint();
  switch (event->type()) {
    case QEvent::KeyPress:
      if (target == &tree_) port_.KVCTree_KeyDown(static_cast<QKeyEvent&>(*event));
      return false;
    case QEvent::ContextMenu:
      if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) port_.KVCTree_MenuKey();
      return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
      return target != &tree_ && OnMouse(static_cast<QMouseEvent&>(*event));
    case QEvent::DragEnter:
    case QEvent::DragMove: {
      auto& drag = static_cast<QDragMoveEvent&>(*event);
      OnDrag(drag, drag.position().toPoint() - offset);
      return true;
    }
    case QEvent::DragLeave:
      port_.Form_DragOver();
      return true;
    case QEvent::Drop:
      OnDrop(static_cast<QDropEvent&>(*event));
      return true;
    default:
      return false;
  }
}

bool TreeEvents::OnMouse(const QMouseEvent& event) {
  if (event.type() == QEvent::MouseMove) return OnMove(event);
  if (event.type() == QEvent::MouseButtonRelease) return OnRelease(event);
  if (event.button() == Qt::LeftButton) pressed_ = event.position().toPoint();
  port_.KVCTree_MouseDown(event.button(), event.position().toPoint());
  return false;
}

bool TreeEvents::OnMove(const QMouseEvent& event) {
  moving_ = true;
  const bool held = port_.KVCTree_MouseMove(event.buttons(), event.position().toPoint());
  moving_ = false;
  if (!held) {
    if (std::exchange(dropped_, false)) port_.KVCTree_DragDrop();
    port_.KVCTree_MouseUp(Qt::LeftButton, event.position().toPoint());
    tree_.EndPress();
  }
  // The view would select what the pointer passes.
  return event.buttons().testFlag(Qt::LeftButton);
}

bool TreeEvents::OnRelease(const QMouseEvent& event) {
  const QPoint position = event.position().toPoint();
  port_.KVCTree_MouseUp(event.button(), position);
  if (event.button() != Qt::LeftButton || tree_.HitTest(position) == tree_.HitTest(pressed_)) return false;
  // The view would select the node under the pointer, but the press has chosen another one.
  tree_.EndPress();
  return true;
}

void TreeEvents::OnDrag(QDragMoveEvent& event, const QPoint& position) {
  const bool node = event.mimeData() != nullptr && event.mimeData()->hasFormat(TreeDrag::Format());
  const bool fits = node && port_.KVCTree_DragOver(*event.mimeData(), position);
  // A drag that is refused when it enters would not be heard of again.
  if (fits || (node && event.type() == QEvent::DragEnter)) {
    event.setDropAction(Qt::MoveAction);
    event.accept();
  } else {
    event.ignore();
  }
}

void TreeEvents::OnDrop(QDropEvent& event) {
  if (event.mimeData() == nullptr || !event.mimeData()->hasFormat(TreeDrag::Format())) {
    event.ignore();
    return;
  }
  event.setDropAction(Qt::MoveAction);
  event.accept();
  // Message boxes can be used only when the drag is over.
  if (moving_) {
    dropped_ = true;
  } else {
    port_.KVCTree_DragDrop();
  }
}

}  // namespace quarl::tree
