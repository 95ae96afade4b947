#include "tree/TreeBuilder.h"

#include <QStringList>
#include <optional>
#include <unordered_map>

#include "tree/OwnerIndex.h"

namespace quarl::tree {
namespace {

using store::TreeRow;
using store::TreeRows;

// The images of the plug-in types of one kind: a prefix and the type's id.
class TypeImages {
 public:
  TypeImages(NodeImages& images, QString prefix) : images_(images), prefix_(std::move(prefix)) {}
  quint16 Generic() {
    if (!generic_) generic_ = images_.NumberOf(prefix_);
    return *generic_;
  }
  quint16 Of(qint32 type) {
    const auto known = numbers_.find(type);
    if (known != numbers_.end()) return known->second;
    const quint16 number = images_.NumberOf(prefix_ + QString::number(type));
    numbers_.emplace(type, number);
    return number;
  }

 private:
  NodeImages& images_;
  QString prefix_;
  std::optional<quint16> generic_;
  std::unordered_map<qint32, quint16> numbers_;
};

// One build of the tree from rows that were read.
class Assembly {
 public:
  Assembly(TreeRows& rows, NodeImages& images)
      : rows_(rows),
        images_(images),
        testImages_(images, QStringLiteral("iTEST")),
        alertImages_(images, QStringLiteral("iALERT")),
        servers_(rows.servers),
        tests_(rows.tests),
        serverAlerts_(rows.serverAlerts),
        groupAlerts_(rows.groupAlerts) {}

  void LoadTree();
  TreeNodes TakeNodes() { return std::move(nodes_); }
  const QStringList& Messages() const { return messages_; }

 private:
  void Prepare();
  void AddGroups(NodeId root);
  void AddGroupTree(qint32 idGroup, NodeId group, std::size_t otherChildren);
  void AddServer(NodeId group, const TreeRow& row);
  void AddFolder(NodeId owner, NodeKind kind, qint32 id, std::span<const TreeRow> rows);

  TreeRows& rows_;
  NodeImages& images_;
  TypeImages testImages_, alertImages_;
  std::optional<quint16> serverImage_;
  OwnerIndex servers_, tests_, serverAlerts_, groupAlerts_;
  TreeNodes nodes_;
  QStringList messages_;
};

QString GroupTreeMessage(const Error& error) {
  return error.Description() + QStringLiteral("(Main:AddGroupTree)");
}

void Assembly::Prepare() {
  // Two folders a server and one a group at most, and the root group and the log.
  nodes_.Reserve(rows_.groups.size() * 2 + rows_.servers.size() * 3 + rows_.tests.size() + rows_.serverAlerts.size() +
                 rows_.groupAlerts.size() + 3);
  nodes_.AdoptTexts(std::move(rows_.texts));
}

void Assembly::LoadTree() {
  try {
    Prepare();
    const NodeId root =
        nodes_.Insert(kTop, 0, {NodeKind::Group, 0}, "SERVERS", images_.NumberOf(QStringLiteral("iSERVERGROUP")));
    if (rows_.failure && rows_.failure->part == TreeRows::Part::Groups) throw rows_.failure->error;
    if (rows_.failure) messages_.append(GroupTreeMessage(rows_.failure->error));
    AddGroups(root);
    nodes_.Insert(kTop, 1, {NodeKind::Log, 0}, "LOGS", images_.NumberOf(QStringLiteral("iLOGS")));
    nodes_.SetExpanded(root, true);
    nodes_.ExpandFolders();
  } catch (const Error& error) {
    messages_.append(error.Description());
  }
}

void Assembly::AddGroups(NodeId root) {
  nodes_.ReserveChildren(root, rows_.groups.size() + servers_.Of(0).size() + 1);
  const quint16 image = images_.NumberOf(QStringLiteral("iSERVERGROUP"));
  for (const TreeRow& row : rows_.groups) {
    const NodeId group = nodes_.Append(root, {NodeKind::Group, row.id}, row.textOffset, row.textLength, image);
    AddGroupTree(row.id, group, 0);
  }
  AddGroupTree(0, root, rows_.groups.size());
}

void Assembly::AddGroupTree(qint32 idGroup, NodeId group, std::size_t otherChildren) {
  try {
    const auto servers = servers_.Of(idGroup);
    const auto alerts = groupAlerts_.Of(idGroup);
    nodes_.ReserveChildren(group, otherChildren + servers.size() + (alerts.empty() ? 0 : 1));
    for (const TreeRow& row : servers) AddServer(group, row);
    AddFolder(group, NodeKind::AlertsFolder, idGroup, alerts);
  } catch (const Error& error) {
    messages_.append(GroupTreeMessage(error));
  }
}

void Assembly::AddServer(NodeId group, const TreeRow& row) {
  if (!serverImage_) serverImage_ = images_.NumberOf(QStringLiteral("iSERVER"));
  const NodeId server = nodes_.Append(group, {NodeKind::Server, row.id}, row.textOffset, row.textLength, *serverImage_);
  AddFolder(server, NodeKind::TestsFolder, row.id, tests_.Of(row.id));
  AddFolder(server, NodeKind::AlertsFolder, row.id, serverAlerts_.Of(row.id));
}

void Assembly::AddFolder(NodeId owner, NodeKind kind, qint32 id, std::span<const TreeRow> rows) {
  if (rows.empty()) return;
  const bool tests = kind == NodeKind::TestsFolder;
  TypeImages& images = tests ? testImages_ : alertImages_;
  const NodeKind child = tests ? NodeKind::Test : NodeKind::Alert;
  const NodeId folder =
      nodes_.Insert(owner, nodes_.At(owner).childCount, {kind, id}, FolderName(kind), images.Generic());
  nodes_.ReserveChildren(folder, rows.size());
  for (const TreeRow& row : rows) {
    nodes_.Append(folder, {child, row.id}, row.textOffset, row.textLength, images.Of(row.type));
  }
}

}  // namespace

TreeBuilder::TreeBuilder(store::Stores& stores, ObjectTreeModel& model, Report report)
    : stores_(stores), model_(model), report_(std::move(report)) {}

void TreeBuilder::LoadTree() {
  TreeRows rows = stores_.Tree().ReadTree();
  Assembly assembly(rows, model_.Images());
  assembly.LoadTree();
  model_.Replace(assembly.TakeNodes());
  for (const QString& message : assembly.Messages()) report_(message);
}

}  // namespace quarl::tree
