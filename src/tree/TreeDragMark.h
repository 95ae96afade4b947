#pragma once

#include "tree/LineDelegate.h"
#include "tree/ObjectTree.h"

namespace quarl::tree {

/// Draws the nodes of the object tree, one of them marked as the place where a drop would go. Names of any length can
/// be edited in it.
class TreeDragMark : public LineDelegate {
 public:
  /// Becomes the tree's delegate. @param tree borrowed; may be gone before this object.
  explicit TreeDragMark(ObjectTree& tree);

  const QString& Key() const { return key_; }
  /// The node to mark; an empty key marks none.
  void Set(const QString& key);

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  ObjectTree& tree_;
  QString key_;
};

}  // namespace quarl::tree
