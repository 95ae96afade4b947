#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "tree/TreeNode.h"

namespace quarl::tree {

/// The lists of children of all nodes, in one buffer. Lists have room in steps of a third to a half, so that they grow
/// at amortised constant cost a child; room given back is used again.
class ChildLists {
 public:
  void Reserve(std::size_t cells) { cells_.reserve(cells); }
  /// Room for so many children in all.
  void Reserve(TreeNode& node, std::size_t count);

  std::span<const NodeId> Of(const TreeNode& node) const { return {cells_.data() + node.children, node.childCount}; }
  NodeId At(const TreeNode& node, quint32 row) const { return cells_[node.children + row]; }
  /// @param row at most the number of children.
  void Insert(TreeNode& node, quint32 row, NodeId child);
  void Erase(TreeNode& node, quint32 row);
  /// Gives the node's room back.
  void Release(TreeNode& node);

  std::size_t MemoryBytes() const { return cells_.capacity() * sizeof(NodeId); }

 private:
  void Resize(TreeNode& node, std::size_t capacity);
  quint32 Allocate(std::size_t capacity);
  void Free(quint32 offset, std::size_t capacity);

  std::vector<NodeId> cells_;
  std::array<quint32, 64> free_{};  // one list a size: offset + 1 of its first room, whose first cell names the next
};

}  // namespace quarl::tree
