#include "tree/ContentList.h"

#include <QHeaderView>

#include "tree/LineDelegate.h"

namespace quarl::tree {

ContentList::ContentList(ContentListModel& model, QWidget* parent) : QTreeView(parent), model_(model) {
  setObjectName(QStringLiteral("KVCContent"));
  setAccessibleName(QStringLiteral("KVCContent"));
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  header()->setStretchLastSection(false);
  header()->setSectionsMovable(false);
  header()->setSectionsClickable(false);
  header()->setHighlightSections(false);
  setItemDelegate(new LineDelegate(this));
  setModel(&model);
}

bool ContentList::HasSelectedRow() const {
  return selectionModel()->isSelected(currentIndex());
}

QString ContentList::SelectedKey() const {
  return HasSelectedRow() ? model_.KeyOf(currentIndex()) : QString();
}

QModelIndex ContentList::HitTest(const QPoint& position) const {
  // Qt finds rows that are scrolled out of sight, too.
  return viewport()->rect().contains(position) ? indexAt(position) : QModelIndex();
}

void ContentList::reset() {
  QTreeView::reset();
  const std::vector<ContentColumn>& columns = model_.Rows().Columns();
  for (std::size_t i = 0; i < columns.size(); ++i) header()->resizeSection(static_cast<int>(i), columns[i].width);
}

}  // namespace quarl::tree
