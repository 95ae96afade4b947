#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <QStringList>
#include <functional>

#include "tree/NodeImages.h"
#include "tree/TreeNodes.h"

namespace quarl::tree {

/// The object tree as a model: nodes are named by their NodeKey. The model owns the nodes; nothing else does.
/// Roles: the text (also for editing), the icon, and the key as accessible description.
/// Every operation that names a node throws Error when there is none with that key. User-interface thread only.
class ObjectTreeModel : public QAbstractItemModel {
 public:
  /// Stores a name that the user typed for the node. False: the node keeps its text. Must not throw.
  using EditHandler = std::function<bool(const QString& key, const QString& text)>;
  enum class Place { Last, Sorted };

  explicit ObjectTreeModel(IconSource icons, QObject* parent = nullptr);

  // --- Look-up by key -------------------------------------------------------------------------------------------
  std::size_t Count() const { return nodes_.Count(); }
  bool Contains(QStringView key) const { return Find(key) != kTop; }
  /// An invalid index when there is no such node.
  QModelIndex IndexOf(QStringView key) const;
  /// Empty for an invalid index.
  QString KeyOf(const QModelIndex& index) const;
  QString TextOf(QStringView key) const;
  QString ImageKeyOf(QStringView key) const;
  /// Empty for a top-level node.
  QString ParentOf(QStringView key) const;
  /// In their order; of the empty key: the top-level nodes.
  QStringList ChildrenOf(QStringView key) const;
  int ChildCountOf(QStringView key) const;
  bool IsExpanded(QStringView key) const;
  bool IsExpanded(const QModelIndex& index) const;

  // --- Changes ----------------------------------------------------------------------------------------------------
  /// Adds a last child; an empty parent key adds a top-level node. Throws Error, with nothing changed, also for a text
  /// that is no node key, for a key that the tree has already and for an image key that names no image.
  void AddNode(QStringView parent, QStringView key, const QString& text, const QString& imageKey);
  /// The same at the sorted place: past the first children of the node's kind whose text sorts before its own (bytes of
  /// UTF-8), before the first other child.
  void InsertSorted(QStringView parent, QStringView key, const QString& text, const QString& imageKey);
  void SetText(QStringView key, const QString& text);
  /// Removes the node with everything below it.
  void RemoveNode(QStringView key);
  /// Gives the node a new parent (empty: none). Throws Error for a parent that is the node or stands below it.
  void MoveNode(QStringView key, QStringView newParent, Place place);
  /// Whether the node counts as expanded. Views open a node marked so when they first show it.
  void SetExpanded(QStringView key, bool expanded);
  void SetExpanded(const QModelIndex& index, bool expanded) { nodes_.SetExpanded(IdOf(index), expanded); }
  /// Replaces the whole tree; the images of the nodes are those of Images().
  void Replace(TreeNodes nodes);
  void SetEditHandler(EditHandler handler) { editHandler_ = std::move(handler); }

  NodeImages& Images() { return images_; }
  const TreeNodes& Nodes() const { return nodes_; }
  /// Bytes that the nodes take, spare room of the buffers included.
  std::size_t MemoryBytes() const { return nodes_.MemoryBytes(); }

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  NodeId Find(QStringView key) const;
  NodeId Require(QStringView key) const;
  NodeId RequireParent(QStringView key) const { return key.isEmpty() ? kTop : Require(key); }
  NodeId IdOf(const QModelIndex& index) const;
  QModelIndex IndexFor(NodeId id) const;
  void Add(QStringView parent, QStringView key, const QString& text, const QString& imageKey, Place place);

  NodeImages images_;
  TreeNodes nodes_;
  EditHandler editHandler_;
};

}  // namespace quarl::tree
