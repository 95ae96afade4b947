#include "tree/TreeNodes.h"

#include <algorithm>
#include <limits>

#include "base/Error.h"

namespace quarl::tree {
namespace {

constexpr quint64 kCompactFrom = 1U << 20;

// Children in order are groups, then servers, both by text, then everything else.
int Rank(NodeKind kind) {
  if (kind == NodeKind::Group) return 0;
  return kind == NodeKind::Server ? 1 : 2;
}

}  // namespace

std::string_view FolderName(NodeKind kind) {
  if (kind == NodeKind::TestsFolder) return "TESTS";
  return kind == NodeKind::AlertsFolder ? "ALERTS" : std::string_view();
}

TreeNodes::TreeNodes() : nodes_(1) {}

void TreeNodes::Reserve(std::size_t nodes) {
  nodes_.reserve(nodes + 1);
  index_.Reserve(nodes, nodes_);
  children_.Reserve(nodes + nodes / 4);
}

void TreeNodes::ReserveChildren(NodeId parent, std::size_t count) {
  children_.Reserve(nodes_[parent], count);
}

void TreeNodes::AdoptTexts(std::string texts) {
  texts_ = std::move(texts);
  deadText_ = 0;
}

NodeId TreeNodes::TakePlace(NodeKey::Parts key) {
  NodeId id = free_;
  if (id == 0) {
    if (nodes_.size() > std::numeric_limits<qint32>::max())
      throw Error(QStringLiteral("The tree holds too many nodes."));
    if (nodes_.size() == nodes_.capacity()) nodes_.reserve(nodes_.size() + nodes_.size() / 4 + 64);
    id = static_cast<NodeId>(nodes_.size());
    nodes_.emplace_back();
  }
  const NodeId nextFree = nodes_[id].parent;
  nodes_[id].id = key.id;
  nodes_[id].kind = key.kind;
  if (!index_.Insert(id, nodes_)) {
    if (id == free_) {
      nodes_[id].kind = NodeKind::Other;
    } else {
      nodes_.pop_back();
    }
    throw Error(QStringLiteral("There is already a node with the key \"%1\".").arg(NodeKey::Make(key.kind, key.id)));
  }
  if (id == free_) free_ = nextFree;
  ++count_;
  return id;
}

void TreeNodes::Link(NodeId id, NodeId parent, quint32 row) {
  TreeNode& owner = nodes_[parent];
  children_.Insert(owner, row, id);
  nodes_[id].parent = parent;
  nodes_[id].row = row;
  if ((owner.flags & TreeNode::kOrdered) == 0) return;
  const bool before = row == 0 || InOrder(Child(parent, row - 1), id);
  const bool after = row + 1 == owner.childCount || InOrder(id, Child(parent, row + 1));
  if (!before || !after) owner.flags &= static_cast<quint8>(~TreeNode::kOrdered);
}

NodeId TreeNodes::Append(NodeId parent, NodeKey::Parts key, quint64 textOffset, quint32 textLength, quint16 image) {
  if (textOffset > texts_.size() || textLength > texts_.size() - textOffset) {
    throw Error(QStringLiteral("A text of the tree is damaged."));
  }
  const NodeId id = TakePlace(key);
  TreeNode& node = nodes_[id];
  node.textOffset = textOffset;
  node.textLength = textLength;
  node.image = image;
  Link(id, parent, nodes_[parent].childCount);
  return id;
}

NodeId TreeNodes::Insert(NodeId parent, quint32 row, NodeKey::Parts key, std::string_view text, quint16 image) {
  const NodeId id = TakePlace(key);
  nodes_[id].flags = TreeNode::kOrdered;
  nodes_[id].image = image;
  StoreText(id, text);
  Link(id, parent, row);
  return id;
}

std::string_view TreeNodes::Text(NodeId id) const {
  const TreeNode& node = nodes_[id];
  if ((node.flags & TreeNode::kFixedText) != 0) return FolderName(node.kind);
  return std::string_view(texts_).substr(node.textOffset, node.textLength);
}

void TreeNodes::StoreText(NodeId id, std::string_view text) {
  TreeNode& node = nodes_[id];
  if (!text.empty() && text == FolderName(node.kind)) {
    node.flags |= TreeNode::kFixedText;
    node.textOffset = node.textLength = 0;
    return;
  }
  node.flags &= static_cast<quint8>(~TreeNode::kFixedText);
  node.textOffset = texts_.size();
  node.textLength = static_cast<quint32>(text.size());
  texts_.append(text);
}

void TreeNodes::DropText(NodeId id) {
  deadText_ += nodes_[id].textLength;
  nodes_[id].textLength = 0;
}

void TreeNodes::CompactTexts() {
  std::string packed;
  packed.reserve(texts_.size() - deadText_);
  for (TreeNode& node : nodes_) {
    if (node.textLength == 0) continue;
    const quint64 offset = packed.size();
    packed.append(texts_, node.textOffset, node.textLength);
    node.textOffset = offset;
  }
  texts_ = std::move(packed);
  deadText_ = 0;
}

void TreeNodes::SetText(NodeId id, std::string_view text) {
  const std::string kept(text);  // the text may be a piece of the buffer
  DropText(id);
  StoreText(id, kept);
  if (deadText_ > kCompactFrom && deadText_ > texts_.size() / 2) CompactTexts();
  const NodeId parent = nodes_[id].parent;
  const quint32 row = RowOf(id);
  const bool before = row == 0 || InOrder(Child(parent, row - 1), id);
  const bool after = row + 1 == nodes_[parent].childCount || InOrder(id, Child(parent, row + 1));
  if (!before || !after) nodes_[parent].flags &= static_cast<quint8>(~TreeNode::kOrdered);
}

void TreeNodes::SetExpanded(NodeId id, bool expanded) {
  quint8& flags = nodes_[id].flags;
  flags = static_cast<quint8>(expanded ? flags | TreeNode::kExpanded : flags & ~TreeNode::kExpanded);
}

void TreeNodes::ExpandFolders() {
  for (TreeNode& node : nodes_) {
    if (!FolderName(node.kind).empty()) node.flags |= TreeNode::kExpanded;
  }
}

quint32 TreeNodes::RowOf(NodeId id) const {
  const TreeNode& node = nodes_[id];
  const std::span<const NodeId> siblings = children_.Of(nodes_[node.parent]);
  const std::size_t start = std::min<std::size_t>(node.row, siblings.size() - 1);
  // Changes among the siblings move a node by a few rows, so the search goes outwards from the last known one.
  for (std::size_t step = 0;; ++step) {
    if (start + step < siblings.size() && siblings[start + step] == id) {
      node.row = static_cast<quint32>(start + step);
      break;
    }
    if (step <= start && siblings[start - step] == id) {
      node.row = static_cast<quint32>(start - step);
      break;
    }
  }
  return node.row;
}

bool TreeNodes::InOrder(NodeId first, NodeId second) const {
  const int firstRank = Rank(nodes_[first].kind);
  const int secondRank = Rank(nodes_[second].kind);
  if (firstRank != secondRank) return firstRank < secondRank;
  return firstRank == 2 || Text(first) <= Text(second);
}

bool TreeNodes::CheckOrder(NodeId parent) const {
  const std::span<const NodeId> children = children_.Of(nodes_[parent]);
  return std::adjacent_find(children.begin(), children.end(), [this](NodeId a, NodeId b) { return !InOrder(a, b); }) ==
         children.end();
}

quint32 TreeNodes::SortedRow(NodeId parent, NodeKind kind, std::string_view text, NodeId without) {
  TreeNode& owner = nodes_[parent];
  const std::span<const NodeId> children = children_.Of(owner);
  const auto passes = [&](NodeId child) { return nodes_[child].kind == kind && Text(child) < text; };
  if ((owner.flags & TreeNode::kOrdered) == 0 && CheckOrder(parent)) owner.flags |= TreeNode::kOrdered;
  const bool ordered = (owner.flags & TreeNode::kOrdered) != 0 && Rank(kind) < 2 && without == kTop;
  if (ordered && !children.empty()) {
    if (nodes_[children.front()].kind != kind) return 0;
    return static_cast<quint32>(std::partition_point(children.begin(), children.end(), passes) - children.begin());
  }
  quint32 row = 0;
  for (const NodeId child : children) {
    if (child == without) continue;
    if (!passes(child)) break;
    ++row;
  }
  return row;
}

bool TreeNodes::IsBelow(NodeId id, NodeId ancestor) const {
  while (id != kTop && id != ancestor) id = nodes_[id].parent;
  return id == ancestor;
}

void TreeNodes::Remove(NodeId id) {
  children_.Erase(nodes_[nodes_[id].parent], RowOf(id));
  std::vector<NodeId> pending{id};
  while (!pending.empty()) {
    const NodeId next = pending.back();
    pending.pop_back();
    const std::span<const NodeId> below = children_.Of(nodes_[next]);
    pending.insert(pending.end(), below.begin(), below.end());
    children_.Release(nodes_[next]);
    index_.Erase(next, nodes_);
    DropText(next);
    nodes_[next] = TreeNode();
    nodes_[next].parent = free_;
    free_ = next;
    --count_;
  }
  if (deadText_ > kCompactFrom && deadText_ > texts_.size() / 2) CompactTexts();
}

void TreeNodes::Move(NodeId id, NodeId newParent, quint32 row) {
  children_.Erase(nodes_[nodes_[id].parent], RowOf(id));
  Link(id, newParent, row);
}

std::size_t TreeNodes::MemoryBytes() const {
  return nodes_.capacity() * sizeof(TreeNode) + children_.MemoryBytes() + index_.MemoryBytes() + texts_.capacity();
}

}  // namespace quarl::tree
