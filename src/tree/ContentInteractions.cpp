#include "tree/ContentInteractions.h"

#include "base/NodeKey.h"

namespace quarl::tree {

ContentInteractions::ContentInteractions(ContentList& list, ObjectTree& tree, SelectionPort& selection,
                                         CommandPort& commands)
    : list_(list), tree_(tree), selection_(selection), commands_(commands) {}

void ContentInteractions::Choose(const QString& key) {
  selection_.SetSelectedKey(key);
  selection_.UpdateOptions(key, false);
}

void ContentInteractions::Click() {
  if (list_.HasSelectedRow()) Choose(list_.SelectedKey());
}

void ContentInteractions::DblClick() {
  const QString key = list_.SelectedKey();
  if (NodeKey::KindOf(key) != NodeKind::Server) return;
  tree_.EnsureVisible(key);
  tree_.Expand(key);
  tree_.Select(key);
  selection_.NodeClick(key);
}

void ContentInteractions::KeyDown(const QKeyEvent& event) {
  const QString key = tree_.SelectedKey();
  if (event.key() == Qt::Key_F5 && !key.isEmpty()) selection_.NodeClick(key);
}

void ContentInteractions::MouseUp(Qt::MouseButton button, const QPoint& position) {
  if (button == Qt::RightButton) PopUp(list_.HitTest(position), position);
}

void ContentInteractions::MenuKey() {
  if (!list_.HasSelectedRow()) return;
  const QModelIndex row = list_.currentIndex();
  list_.scrollTo(row);
  PopUp(row, list_.visualRect(row).center());
}

void ContentInteractions::PopUp(const QModelIndex& row, const QPoint& position) {
  if (!row.isValid()) return;
  const QString key = list_.Rows().KeyOf(row);
  Choose(key);
  const QString menu = MenuOf(key);
  if (!menu.isEmpty()) commands_.PopUp(menu, list_.viewport()->mapToGlobal(position));
}

}  // namespace quarl::tree
