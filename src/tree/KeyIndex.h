#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "tree/TreeNode.h"

namespace quarl::tree {

/// Finds nodes by their key: a hash table of node numbers with open addressing, 4 bytes a place. Neighbouring ids of
/// one kind are neighbours here too, since they are mostly added and asked for together. The bits of a place that the
/// number leaves free hold a piece of the hash, so that few other nodes are looked at. It never shrinks.
class KeyIndex {
 public:
  KeyIndex();
  /// Room for so many nodes without growing.
  void Reserve(std::size_t count, std::span<const TreeNode> nodes);
  /// 0 when no node has the key.
  NodeId Find(NodeKey::Parts key, std::span<const TreeNode> nodes) const;
  /// Adds nodes[id] under its key. False: the key is there already, nothing is changed.
  bool Insert(NodeId id, std::span<const TreeNode> nodes);
  /// Takes out nodes[id], which must be there.
  void Erase(NodeId id, std::span<const TreeNode> nodes);

  std::size_t MemoryBytes() const { return places_.capacity() * sizeof(quint32); }

 private:
  std::size_t PlaceOf(NodeKey::Parts key) const;
  quint32 TagOf(NodeKey::Parts key) const;
  std::size_t Next(std::size_t place) const { return (place + 1) & mask_; }
  void Rebuild(unsigned bits, std::span<const TreeNode> nodes);

  std::vector<quint32> places_;  // 0 = empty
  std::size_t count_ = 0;
  unsigned bits_ = 0;  // places_ has 2^bits_ places; node numbers are below that
  quint32 mask_ = 0;
};

}  // namespace quarl::tree
