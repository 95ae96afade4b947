#include "tree/ObjectTree.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include "base/Error.h"
#include "tree/LineDelegate.h"

namespace quarl::tree {

ObjectTree::ObjectTree(ObjectTreeModel& model, QWidget* parent) : QTreeView(parent), model_(model) {
  setObjectName(QStringLiteral("KVCTree"));
  setAccessibleName(QStringLiteral("KVCTree"));
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(SingleSelection);
  setItemDelegate(new LineDelegate(this));
  connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
    model_.SetExpanded(index, true);
    OpenMarked(index, 0, model_.rowCount(index) - 1);
  });
  connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) { model_.SetExpanded(index, false); });
  ObjectTree::setModel(&model);
}

void ObjectTree::setModel(QAbstractItemModel* model) {
  QTreeView::setModel(model);
  OpenMarked({}, 0, model_.rowCount() - 1);
}

void ObjectTree::reset() {
  QTreeView::reset();
  OpenMarked({}, 0, model_.rowCount() - 1);
}

void ObjectTree::OpenMarked(const QModelIndex& parent, int first, int last) {
  // Only nodes that are shown are opened: each open node costs something at every later change of the tree.
  for (int row = first; row <= last; ++row) {
    const QModelIndex index = model_.index(row, 0, parent);
    if (model_.IsExpanded(index)) expand(index);
  }
}

QModelIndex ObjectTree::RequireIndex(const QString& key) const {
  const QModelIndex index = model_.IndexOf(key);
  if (!index.isValid()) throw Error(QStringLiteral("There is no node with the key \"%1\".").arg(key.left(80)));
  return index;
}

QString ObjectTree::SelectedKey() const {
  const QModelIndex index = currentIndex();
  return selectionModel() != nullptr && selectionModel()->isSelected(index) ? model_.KeyOf(index) : QString();
}

void ObjectTree::Select(const QString& key) {
  const QModelIndex index = RequireIndex(key);
  const QScopedValueRollback<int> quiet(quiet_, quiet_ + 1);
  setCurrentIndex(index);
}

void ObjectTree::EnsureVisible(const QString& key) {
  const QModelIndex index = RequireIndex(key);
  QModelIndexList parents;
  for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent()) parents.prepend(parent);
  for (const QModelIndex& parent : parents) expand(parent);
  scrollTo(index);
}

void ObjectTree::Expand(const QString& key) {
  expand(RequireIndex(key));
}

QString ObjectTree::HitTest(const QPoint& position) const {
  // Qt finds nodes that are scrolled out of sight, too.
  return viewport()->rect().contains(position) ? model_.KeyOf(indexAt(position)) : QString();
}

void ObjectTree::RaiseNodeClick() {
  const QString key = SelectedKey();
  if (nodeClick_ && !key.isEmpty()) nodeClick_(key);
}

void ObjectTree::EndPress() {
  if (std::exchange(pressed_, false)) RaiseNodeClick();
}

void ObjectTree::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (quiet_ > 0 || pressed_ || !current.isValid()) return;
  // The selection is complete, and the handler free to show dialogs, only after the view has dealt with the event.
  QMetaObject::invokeMethod(
      this, [this] { RaiseNodeClick(); }, Qt::QueuedConnection);
}

void ObjectTree::rowsInserted(const QModelIndex& parent, int first, int last) {
  QTreeView::rowsInserted(parent, first, last);
  if (!parent.isValid() || isExpanded(parent)) OpenMarked(parent, first, last);
}

void ObjectTree::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  const QScopedValueRollback<int> quiet(quiet_, quiet_ + 1);
  QTreeView::rowsAboutToBeRemoved(parent, first, last);
}

void ObjectTree::focusInEvent(QFocusEvent* event) {
  const QScopedValueRollback<int> quiet(quiet_, quiet_ + 1);
  QTreeView::focusInEvent(event);
}

void ObjectTree::keyPressEvent(QKeyEvent* event) {
  const QPersistentModelIndex before = currentIndex();
  {
    const QScopedValueRollback<int> quiet(quiet_, quiet_ + 1);
    QTreeView::keyPressEvent(event);
  }
  if (currentIndex().isValid() && before != currentIndex()) RaiseNodeClick();
}

void ObjectTree::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->accept();
    return;
  }
  const QModelIndex index = indexAt(event->position().toPoint());
  pressed_ = true;
  QTreeView::mousePressEvent(event);
  pressed_ = index.isValid() && index == currentIndex() && visualRect(index).contains(event->position().toPoint());
}

void ObjectTree::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->accept();
    return;
  }
  QTreeView::mouseReleaseEvent(event);
  EndPress();
}

void ObjectTree::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) QTreeView::mouseDoubleClickEvent(event);
}

}  // namespace quarl::tree
