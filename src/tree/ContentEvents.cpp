#include "tree/ContentEvents.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <utility>

namespace quarl::tree {

ContentEvents::ContentEvents(ContentList& list, ContentEventPort& port) : list_(list), port_(port) {
  list.installEventFilter(this);
  list.viewport()->installEventFilter(this);
  connect(list.selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!pressed_ && list_.HasSelectedRow()) port_.KVCContent_Click();
  });
}

bool ContentEvents::eventFilter(QObject* target, QEvent* event) {
  const bool onRows = target == list_.viewport();
  switch (event->type()) {
    case QEvent::KeyPress:
      return !onRows && OnKey(static_cast<QKeyEvent&>(*event));
    case QEvent::ContextMenu:
      if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) port_.KVCContent_MenuKey();
      return true;
    case QEvent::MouseButtonPress:
      if (onRows) pressed_ = true;
      return false;
    case QEvent::MouseButtonRelease:
      if (onRows) OnRelease(static_cast<QMouseEvent&>(*event));
      return false;
    case QEvent::MouseButtonDblClick:
      if (!onRows || static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton) return false;
      port_.KVCContent_DblClick();
      return true;
    default:
      return false;
  }
}

bool ContentEvents::OnKey(const QKeyEvent& event) {
  pressed_ = false;
  if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) {
    port_.KVCContent_DblClick();
    return true;
  }
  port_.KVCContent_KeyDown(event);
  return false;
}

void ContentEvents::OnRelease(const QMouseEvent& event) {
  const bool pressed = std::exchange(pressed_, false);
  if (pressed && event.button() == Qt::LeftButton) port_.KVCContent_Click();
  port_.KVCContent_MouseUp(event.button(), event.position().toPoint());
}

}  // namespace quarl::tree
