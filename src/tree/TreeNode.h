#pragma once

#include "base/NodeKey.h"

namespace quarl::tree {

/// The place of a node in the node store; 0 is the invisible parent of the top-level nodes and means "none" elsewhere.
using NodeId = quint32;
inline constexpr NodeId kTop = 0;

/// One node of the object tree. Texts and lists of children stand in common buffers of the owning TreeNodes.
struct TreeNode {
  enum Flag : quint8 {
    kExpanded = 1,   ///< the node counts as expanded, whether a view has opened it yet or not
    kFixedText = 2,  ///< a folder under its usual name, which takes no place in the text buffer
    kOrdered = 4,    ///< the children stand in the order that sorted insertion keeps
  };

  quint64 textOffset = 0;
  quint32 textLength = 0;  ///< bytes of UTF-8
  qint32 id = 0;
  NodeKind kind = NodeKind::Other;  ///< Other: a free place
  quint8 flags = kOrdered;
  quint16 image = 0;
  NodeId parent = kTop;  ///< of a free place: the next free one
  quint32 children = 0;  ///< where the list of children begins
  quint32 childCount = 0;
  quint32 childCapacity = 0;
  mutable quint32 row = 0;  ///< where the node was last seen among its siblings

  NodeKey::Parts Key() const { return {kind, id}; }
};
static_assert(sizeof(TreeNode) == 40, "the memory of large trees follows from this size");

}  // namespace quarl::tree
