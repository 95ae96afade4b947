#pragma once

#include <QTreeView>

#include "tree/ContentListModel.h"

namespace quarl::tree {

/// The view of the detail list, "KVCContent": whole rows are selected, columns start at the widths that the model names
/// and can be resized. User-interface thread only.
class ContentList : public QTreeView {
 public:
  /// @param model must outlive the view.
  explicit ContentList(ContentListModel& model, QWidget* parent = nullptr);

  ContentListModel& Rows() const { return model_; }
  bool HasSelectedRow() const;
  /// The key of the selected row; empty when no row is selected or it has none.
  QString SelectedKey() const;
  /// The row at a point of the viewport; an invalid index where there is none.
  QModelIndex HitTest(const QPoint& position) const;

  void reset() override;

 private:
  ContentListModel& model_;
};

}  // namespace quarl::tree
