#include "tree/ObjectTreeModel.h"

#include "base/Error.h"
#include "base/Utf8.h"

namespace quarl::tree {
namespace {

std::string ToUtf8(const QString& text) {
  return text.toStdString();
}

NodeKey::Parts RequireKey(QStringView key) {
  const auto parts = NodeKey::Split(key);
  if (!parts) throw Error(QStringLiteral("\"%1\" is no key of a node.").arg(key.left(80)));
  return *parts;
}

}  // namespace

ObjectTreeModel::ObjectTreeModel(IconSource icons, QObject* parent)
    : QAbstractItemModel(parent), images_(std::move(icons)) {}

NodeId ObjectTreeModel::Find(QStringView key) const {
  const auto parts = NodeKey::Split(key);
  return parts ? nodes_.Find(*parts) : kTop;
}

NodeId ObjectTreeModel::Require(QStringView key) const {
  const NodeId id = Find(key);
  if (id == kTop) throw Error(QStringLiteral("There is no node with the key \"%1\".").arg(key.left(80)));
  return id;
}

NodeId ObjectTreeModel::IdOf(const QModelIndex& index) const {
  return index.isValid() ? static_cast<NodeId>(index.internalId()) : kTop;
}

QModelIndex ObjectTreeModel::IndexFor(NodeId id) const {
  return id == kTop ? QModelIndex() : createIndex(static_cast<int>(nodes_.RowOf(id)), 0, quintptr{id});
}

QModelIndex ObjectTreeModel::IndexOf(QStringView key) const {
  return IndexFor(Find(key));
}

QString ObjectTreeModel::KeyOf(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  const NodeKey::Parts key = nodes_.At(IdOf(index)).Key();
  return NodeKey::Make(key.kind, key.id);
}

QString ObjectTreeModel::TextOf(QStringView key) const {
  return FromUtf8(nodes_.Text(Require(key)));
}

QString ObjectTreeModel::ImageKeyOf(QStringView key) const {
  return images_.Key(nodes_.At(Require(key)).image);
}

QString ObjectTreeModel::ParentOf(QStringView key) const {
  return KeyOf(IndexFor(nodes_.At(Require(key)).parent));
}

QStringList ObjectTreeModel::ChildrenOf(QStringView key) const {
  const NodeId parent = RequireParent(key);
  QStringList keys;
  for (quint32 row = 0; row < nodes_.At(parent).childCount; ++row) {
    const NodeKey::Parts child = nodes_.At(nodes_.Child(parent, row)).Key();
    keys.append(NodeKey::Make(child.kind, child.id));
  }
  return keys;
}

int ObjectTreeModel::ChildCountOf(QStringView key) const {
  return static_cast<int>(nodes_.At(RequireParent(key)).childCount);
}

bool ObjectTreeModel::IsExpanded(QStringView key) const {
  return (nodes_.At(Require(key)).flags & TreeNode::kExpanded) != 0;
}

bool ObjectTreeModel::IsExpanded(const QModelIndex& index) const {
  return (nodes_.At(IdOf(index)).flags & TreeNode::kExpanded) != 0;
}

void ObjectTreeModel::Add(QStringView parent, QStringView key, const QString& text, const QString& imageKey,
                          Place place) {
  const NodeKey::Parts parts = RequireKey(key);
  const NodeId owner = RequireParent(parent);
  if (nodes_.Find(parts) != kTop) {
    throw Error(QStringLiteral("There is already a node with the key \"%1\".").arg(key));
  }
  const quint16 image = images_.NumberOf(imageKey);
  const std::string utf8 = ToUtf8(text);
  const quint32 row = place == Place::Sorted ? nodes_.SortedRow(owner, parts.kind, utf8) : nodes_.At(owner).childCount;
  beginInsertRows(IndexFor(owner), static_cast<int>(row), static_cast<int>(row));
  nodes_.Insert(owner, row, parts, utf8, image);
  endInsertRows();
}

void ObjectTreeModel::AddNode(QStringView parent, QStringView key, const QString& text, const QString& imageKey) {
  Add(parent, key, text, imageKey, Place::Last);
}

void ObjectTreeModel::InsertSorted(QStringView parent, QStringView key, const QString& text, const QString& imageKey) {
  Add(parent, key, text, imageKey, Place::Sorted);
}

void ObjectTreeModel::SetText(QStringView key, const QString& text) {
  const NodeId id = Require(key);
  nodes_.SetText(id, ToUtf8(text));
  const QModelIndex changed = IndexFor(id);
  Q_EMIT dataChanged(changed, changed, {Qt::DisplayRole, Qt::EditRole});
}

void ObjectTreeModel::RemoveNode(QStringView key) {
  const NodeId id = Require(key);
  const int row = static_cast<int>(nodes_.RowOf(id));
  beginRemoveRows(IndexFor(nodes_.At(id).parent), row, row);
  nodes_.Remove(id);
  endRemoveRows();
}

void ObjectTreeModel::MoveNode(QStringView key, QStringView newParent, Place place) {
  const NodeId id = Require(key);
  const NodeId owner = RequireParent(newParent);
  if (nodes_.IsBelow(owner, id)) throw Error(QStringLiteral("A node cannot be moved below itself."));
  const NodeId oldOwner = nodes_.At(id).parent;
  const quint32 oldRow = nodes_.RowOf(id);
  const bool same = owner == oldOwner;
  quint32 row = nodes_.At(owner).childCount - (same ? 1U : 0U);
  if (place == Place::Sorted) {
    const std::string text(nodes_.Text(id));
    row = nodes_.SortedRow(owner, nodes_.At(id).kind, text, same ? id : kTop);
  }
  if (same && row == oldRow) return;
  // Qt counts the place in the list that still holds the node.
  const quint32 before = same && row > oldRow ? row + 1 : row;
  beginMoveRows(IndexFor(oldOwner), static_cast<int>(oldRow), static_cast<int>(oldRow), IndexFor(owner),
                static_cast<int>(before));
  nodes_.Move(id, owner, row);
  endMoveRows();
}

void ObjectTreeModel::SetExpanded(QStringView key, bool expanded) {
  nodes_.SetExpanded(Require(key), expanded);
}

void ObjectTreeModel::Replace(TreeNodes nodes) {
  beginResetModel();
  nodes_ = std::move(nodes);
  endResetModel();
}

QModelIndex ObjectTreeModel::index(int row, int column, const QModelIndex& parent) const {
  const NodeId owner = IdOf(parent);
  if (row < 0 || column != 0 || parent.column() > 0) return {};
  if (static_cast<quint32>(row) >= nodes_.At(owner).childCount) return {};
  return createIndex(row, 0, quintptr{nodes_.Child(owner, static_cast<quint32>(row))});
}

QModelIndex ObjectTreeModel::parent(const QModelIndex& child) const {
  return child.isValid() ? IndexFor(nodes_.At(IdOf(child)).parent) : QModelIndex();
}

int ObjectTreeModel::rowCount(const QModelIndex& parent) const {
  return parent.column() > 0 ? 0 : static_cast<int>(nodes_.At(IdOf(parent)).childCount);
}

int ObjectTreeModel::columnCount(const QModelIndex& parent) const {
  Q_UNUSED(parent);
  return 1;
}

bool ObjectTreeModel::hasChildren(const QModelIndex& parent) const {
  return rowCount(parent) > 0;
}

QVariant ObjectTreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const NodeId id = IdOf(index);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return FromUtf8(nodes_.Text(id));
    case Qt::DecorationRole:
      return images_.Icon(nodes_.At(id).image);
    case Qt::AccessibleDescriptionRole:
      return KeyOf(index);
    default:
      return {};
  }
}

bool ObjectTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid()) return false;
  const QString key = KeyOf(index);
  const QString text = value.toString();
  if (editHandler_ && !editHandler_(key, text)) return false;
  if (!Contains(key)) return false;  // the handler may have rebuilt the tree
  SetText(key, text);
  return true;
}

Qt::ItemFlags ObjectTreeModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable;
}

}  // namespace quarl::tree
