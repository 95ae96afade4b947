#include "tree/ChildLists.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "base/Error.h"

namespace quarl::tree {
namespace {

// The sizes of rooms: 1, 2, 3, 4, 6, 8, 12, 16, 24, ...
std::size_t RoomFor(std::size_t count) {
  if (count <= 3) return count;
  const std::size_t power = std::bit_ceil(count);
  return count <= power / 4 * 3 ? power / 4 * 3 : power;
}

std::size_t SizeClass(std::size_t room) {
  if (room <= 2) return room;
  const auto log = static_cast<std::size_t>(std::bit_width(room) - 1);
  return std::has_single_bit(room) ? 2 * log : 2 * log + 1;
}

}  // namespace

quint32 ChildLists::Allocate(std::size_t capacity) {
  quint32& head = free_.at(SizeClass(capacity));
  if (head != 0) {
    const quint32 offset = head - 1;
    head = cells_[offset];
    return offset;
  }
  const std::size_t offset = cells_.size();
  if (offset + capacity > std::numeric_limits<quint32>::max()) {
    throw Error(QStringLiteral("The tree holds too many nodes."));
  }
  if (offset + capacity > cells_.capacity()) cells_.reserve(offset + capacity + offset / 4 + 1024);
  cells_.resize(offset + capacity);
  return static_cast<quint32>(offset);
}

void ChildLists::Free(quint32 offset, std::size_t capacity) {
  if (capacity == 0) return;
  quint32& head = free_.at(SizeClass(capacity));
  cells_[offset] = head;
  head = offset + 1;
}

void ChildLists::Resize(TreeNode& node, std::size_t capacity) {
  const quint32 offset = Allocate(capacity);
  std::copy_n(cells_.begin() + node.children, node.childCount, cells_.begin() + offset);
  Free(node.children, node.childCapacity);
  node.children = offset;
  node.childCapacity = static_cast<quint32>(capacity);
}

void ChildLists::Reserve(TreeNode& node, std::size_t count) {
  const std::size_t room = RoomFor(count);
  if (room > node.childCapacity) Resize(node, room);
}

void ChildLists::Insert(TreeNode& node, quint32 row, NodeId child) {
  if (node.childCount == node.childCapacity) Resize(node, RoomFor(std::size_t{node.childCount} + 1));
  const auto first = cells_.begin() + node.children;
  std::copy_backward(first + row, first + node.childCount, first + node.childCount + 1);
  *(first + row) = child;
  ++node.childCount;
}

void ChildLists::Erase(TreeNode& node, quint32 row) {
  const auto first = cells_.begin() + node.children;
  std::copy(first + row + 1, first + node.childCount, first + row);
  --node.childCount;
  if (node.childCount == 0) Release(node);
}

void ChildLists::Release(TreeNode& node) {
  Free(node.children, node.childCapacity);
  node.children = node.childCount = node.childCapacity = 0;
}

}  // namespace quarl::tree
