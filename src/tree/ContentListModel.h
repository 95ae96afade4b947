#pragma once

#include <QAbstractTableModel>

#include "tree/ContentRows.h"
#include "tree/NodeImages.h"

namespace quarl::tree {

/// The detail list as a model: up to three columns of text, an icon in the first, and a NodeKey a row (as accessible
/// description; log rows have none). It is only replaced whole. User-interface thread only.
class ContentListModel : public QAbstractTableModel {
 public:
  explicit ContentListModel(IconSource icons, QObject* parent = nullptr);

  /// Drops columns and rows.
  void Clear() { Replace({}); }
  /// The images of the rows are those of Images().
  void Replace(ContentRows rows);
  const ContentRows& Rows() const { return rows_; }
  NodeImages& Images() { return images_; }
  /// Empty for an invalid index and for a row without key.
  QString KeyOf(const QModelIndex& index) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  NodeImages images_;
  ContentRows rows_;
};

}  // namespace quarl::tree
