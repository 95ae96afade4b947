#include "tree/TreeDragDrop.h"

#include <tuple>

#include "base/NodeKey.h"

namespace quarl::tree {

void TreeDragDrop::MoveServer(const QString& server, const QString& group) {
  ObjectTreeModel& nodes = tree_.Nodes();
  if (nodes.TextOf(nodes.ParentOf(server)) == nodes.TextOf(group)) return;
  const qint32 idServer = NodeKey::IdOf(server);
  store::ServerStore& servers = stores_.Servers();
  if (const auto record = servers.GetServer(idServer)) {
    std::ignore = servers.UpdateServer(idServer, record->name, record->ipAddress, NodeKey::IdOf(group));
  }
  nodes.MoveNode(server, group, ObjectTreeModel::Place::Sorted);
}

void TreeDragDrop::MoveAlert(const QString& alert, const QString& owner) {
  const qint32 idOwner = NodeKey::IdOf(owner);
  const bool toGroup = NodeKey::KindOf(owner) == NodeKind::Group;
  stores_.Alerts().MoveAlert(NodeKey::IdOf(alert), toGroup ? idOwner : 0, toGroup ? 0 : idOwner);

  ObjectTreeModel& nodes = tree_.Nodes();
  const QString folder = NodeKey::Make(NodeKind::AlertsFolder, idOwner);
  const bool first = !nodes.Contains(folder);
  if (first) nodes.AddNode(owner, folder, QStringLiteral("ALERTS"), QStringLiteral("iALERT"));
  const QString oldFolder = nodes.ParentOf(alert);
  nodes.MoveNode(alert, folder, ObjectTreeModel::Place::Last);
  if (nodes.ChildCountOf(oldFolder) == 0) nodes.RemoveNode(oldFolder);
  if (first) tree_.Expand(folder);
}

}  // namespace quarl::tree
