#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tree/ChildLists.h"
#include "tree/KeyIndex.h"
#include "tree/TreeNode.h"

namespace quarl::tree {

/// The nodes of an object tree, about 60 bytes each with key index and text. Look-up by key, adding, moving and
/// removing cost the same in a tree of any size, apart from the siblings. Keys are unique. Texts are UTF-8 and sort by
/// their bytes. Not thread-safe; movable between threads.
class TreeNodes {
 public:
  TreeNodes();

  // --- Building whole trees ---------------------------------------------------------------------------------------
  /// Room for so many nodes in all.
  void Reserve(std::size_t nodes);
  void ReserveChildren(NodeId parent, std::size_t count);
  /// Takes the text buffer over; only for a tree without nodes.
  void AdoptTexts(std::string texts);
  /// Adds a last child, its text being a piece of the adopted texts.
  /// Throws Error, with nothing changed, when there is a node with the key or the piece is outside the texts.
  NodeId Append(NodeId parent, NodeKey::Parts key, quint64 textOffset, quint32 textLength, quint16 image);

  // --- Look-up ----------------------------------------------------------------------------------------------------
  /// kTop when no node has the key.
  NodeId Find(NodeKey::Parts key) const { return index_.Find(key, nodes_); }
  std::size_t Count() const { return count_; }
  const TreeNode& At(NodeId id) const { return nodes_[id]; }
  /// Valid until the next change.
  std::string_view Text(NodeId id) const;
  NodeId Child(NodeId parent, quint32 row) const { return children_.At(nodes_[parent], row); }
  /// The node's place among its siblings.
  quint32 RowOf(NodeId id) const;
  /// Where a node is to be put among a parent's children: the walk passes over children of the node's kind whose text
  /// sorts before its own and ends at the first other child.
  /// @param without a child that the walk does not see, or kTop.
  quint32 SortedRow(NodeId parent, NodeKind kind, std::string_view text, NodeId without = kTop);
  bool IsBelow(NodeId id, NodeId ancestor) const;
  /// Bytes of all buffers, spare room included.
  std::size_t MemoryBytes() const;

  // --- Changes ----------------------------------------------------------------------------------------------------
  /// Throws Error, with nothing changed, when there is a node with the key.
  NodeId Insert(NodeId parent, quint32 row, NodeKey::Parts key, std::string_view text, quint16 image);
  void SetText(NodeId id, std::string_view text);
  void SetExpanded(NodeId id, bool expanded);
  /// Marks every folder as expanded.
  void ExpandFolders();
  /// Removes the node with everything below it.
  void Remove(NodeId id);
  /// @param row the place among the new parent's children, counted without the node.
  void Move(NodeId id, NodeId newParent, quint32 row);

 private:
  NodeId TakePlace(NodeKey::Parts key);
  void Link(NodeId id, NodeId parent, quint32 row);
  void DropText(NodeId id);
  void StoreText(NodeId id, std::string_view text);
  void CompactTexts();
  bool InOrder(NodeId first, NodeId second) const;
  bool CheckOrder(NodeId parent) const;

  std::vector<TreeNode> nodes_;
  ChildLists children_;
  KeyIndex index_;
  std::string texts_;
  std::size_t count_ = 0;
  quint64 deadText_ = 0;  // bytes of texts_ that no node uses any more
  NodeId free_ = 0;
};

/// The usual name of a folder; empty for other kinds.
std::string_view FolderName(NodeKind kind);

}  // namespace quarl::tree
