#include "tree/TreeInteractions.h"

#include "base/NodeKey.h"

namespace quarl::tree {
namespace {

bool IsDelete(const QKeyEvent& event) {
  const bool decimalPoint = event.key() == Qt::Key_Period || event.key() == Qt::Key_Comma;
  return event.key() == Qt::Key_Delete || (decimalPoint && event.modifiers().testFlag(Qt::KeypadModifier));
}

}  // namespace

TreeInteractions::TreeInteractions(ObjectTree& tree, store::Stores& stores, SelectionPort& selection,
                                   CommandPort& commands)
    : tree_(tree), stores_(stores), selection_(selection), commands_(commands) {}

bool TreeInteractions::AfterLabelEdit(const QString& key, const QString& text) {
  const NodeKind kind = NodeKey::KindOf(key);
  if (kind == NodeKind::Test) stores_.Tests().RenameTest(NodeKey::IdOf(key), text);
  if (kind == NodeKind::Alert) stores_.Alerts().RenameAlert(NodeKey::IdOf(key), text);
  return true;
}

void TreeInteractions::Rename() {
  const QString key = tree_.SelectedKey();
  if (key.isEmpty()) return;
  tree_.EnsureVisible(key);
  tree_.edit(tree_.Nodes().IndexOf(key));
}

void TreeInteractions::KeyDown(const QKeyEvent& event) {
  const QString key = tree_.SelectedKey();
  if (key.isEmpty()) return;
  if (IsDelete(event)) {
    Remove();
  } else if (event.key() == Qt::Key_F5) {
    selection_.NodeClick(key);
  }
}

void TreeInteractions::Remove() {
  const QString key = tree_.SelectedKey();
  const NodeKind kind = NodeKey::KindOf(key);
  const bool removable = kind == NodeKind::Server || kind == NodeKind::Test || kind == NodeKind::Alert ||
                         (kind == NodeKind::Group && key != NodeKey::kRoot);
  if (!removable) return;
  Choose(key);
  commands_.Remove(kind);
}

// The commands act on the selected key, which may be that of a row in the list.
void TreeInteractions::Choose(const QString& key) {
  if (selection_.SelectedKey() == key) return;
  selection_.SetSelectedKey(key);
  selection_.UpdateOptions(key, false);
}

void TreeInteractions::MouseUp(Qt::MouseButton button, const QPoint& position) {
  if (button == Qt::RightButton) PopUp(tree_.HitTest(position), position);
}

void TreeInteractions::MenuKey() {
  const QString key = tree_.SelectedKey();
  if (key.isEmpty()) return;
  tree_.EnsureVisible(key);
  Choose(key);
  PopUp(key, tree_.visualRect(tree_.Nodes().IndexOf(key)).center());
}

void TreeInteractions::PopUp(const QString& key, const QPoint& position) {
  const QString menu = MenuOf(key);
  if (menu.isEmpty() || selection_.SelectedKey().isEmpty()) return;
  commands_.PopUp(menu, tree_.viewport()->mapToGlobal(position));
}

}  // namespace quarl::tree
