#include "tree/ContentListModel.h"

namespace quarl::tree {

ContentListModel::ContentListModel(IconSource icons, QObject* parent)
    : QAbstractTableModel(parent), images_(std::move(icons)) {}

void ContentListModel::Replace(ContentRows rows) {
  beginResetModel();
  rows_ = std::move(rows);
  endResetModel();
}

QString ContentListModel::KeyOf(const QModelIndex& index) const {
  return index.isValid() ? rows_.Key(static_cast<std::size_t>(index.row())) : QString();
}

int ContentListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.RowCount());
}

int ContentListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.Columns().size());
}

QVariant ContentListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const auto row = static_cast<std::size_t>(index.row());
  switch (role) {
    case Qt::DisplayRole:
      return rows_.Text(row, static_cast<std::size_t>(index.column()));
    case Qt::DecorationRole:
      if (index.column() > 0 || rows_.Image(row) == ContentRows::kNoImage) return {};
      return images_.Icon(rows_.Image(row));
    case Qt::AccessibleDescriptionRole:
      return rows_.Key(row);
    default:
      return {};
  }
}

QVariant ContentListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  if (role == Qt::DisplayRole) return rows_.Columns()[static_cast<std::size_t>(section)].caption;
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
  return {};
}

Qt::ItemFlags ContentListModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
}

}  // namespace quarl::tree
