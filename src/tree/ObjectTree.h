#pragma once

#include <QTreeView>
#include <functional>

#include "tree/ObjectTreeModel.h"

namespace quarl::tree {

/// The view of the object tree, "KVCTree". Nodes are named by their NodeKey; a key without a node is an Error.
/// Nodes that the model marks as expanded are opened when they are first shown; what the user opens and closes is
/// marked in the model. User-interface thread only.
class ObjectTree : public QTreeView {
 public:
  /// The user chose a node, with the left mouse button or the keyboard; also the node that was selected already.
  using NodeClick = std::function<void(const QString& key)>;

  /// @param model must outlive the view.
  explicit ObjectTree(ObjectTreeModel& model, QWidget* parent = nullptr);

  ObjectTreeModel& Nodes() const { return model_; }
  void SetNodeClick(NodeClick handler) { nodeClick_ = std::move(handler); }

  /// Empty when nothing is selected.
  QString SelectedKey() const;
  /// Selects the node; no node click follows.
  void Select(const QString& key);
  /// Expands the node's parents and scrolls to it.
  void EnsureVisible(const QString& key);
  void Expand(const QString& key);
  /// Ends a press of the left button whose release does not reach the view; a node click follows as with one.
  void EndPress();
  /// The key of the node at a point of the viewport; empty where there is none.
  QString HitTest(const QPoint& position) const;

  void setModel(QAbstractItemModel* model) override;
  void reset() override;

 protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void rowsInserted(const QModelIndex& parent, int first, int last) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  QModelIndex RequireIndex(const QString& key) const;
  void OpenMarked(const QModelIndex& parent, int first, int last);
  void RaiseNodeClick();

  ObjectTreeModel& model_;
  NodeClick nodeClick_;
  int quiet_ = 0;         // above 0: changes of the current node are not the user's choice
  bool pressed_ = false;  // the left button went down on a node
};

}  // namespace quarl::tree
