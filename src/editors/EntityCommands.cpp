#include "editors/EntityCommands.h"

#include <tuple>

#include "base/Error.h"
#include "base/NodeKey.h"
#include "editors/pGroup.h"
#include "editors/pServer.h"
#include "ui/BusyPointer.h"

namespace quarl::editors {

EntityCommands::EntityCommands(EditorContext context, tree::Common& common, CommandPort& commands)
    : context_(std::move(context)),
      common_(common),
      commands_(commands),
      boxes_(context_.window),
      trap_(QStringLiteral("Main"), boxes_),
      alerts_(context_.stores, context_.tree, boxes_) {}

// --- Dialogs ---

void EntityCommands::mGroupAdd_Click() {
  trap_("mGroupAdd_Click", [&] {
    pGroup dialog(context_);
    std::ignore = dialog.LoadGroup(pGroup::kNew);
    dialog.exec();
  });
}

void EntityCommands::mGroupProperties_Click() {
  trap_("mGroupProperties_Click", [&] {
    pGroup dialog(context_);
    if (dialog.LoadGroup(IdBehind(NodeKind::Group, SelectedKey()))) dialog.exec();
  });
}

void EntityCommands::mGroupAddServer_Click() {
  trap_.Quiet("mGroupAddServer_Click", [&] { EditServer(pServer::kNew); });
}

void EntityCommands::mServerProperties_Click() {
  trap_.Quiet("mServerProperties_Click", [&] { EditServer(IdBehind(NodeKind::Server, SelectedKey())); });
}

void EntityCommands::EditServer(qint32 id) {
  pServer dialog(context_);
  std::ignore = dialog.LoadServer(id);
  if (dialog.IsUsable()) dialog.exec();
}

// --- Removal ---

void EntityCommands::mGroupRemove_Click() {
  trap_("mGroupRemove_Click", [&] {
    RemoveOwner(NodeKind::Group, Text::ConfirmRemoveGroup, Text::RemoveGroupFailed,
                [&](qint32 id) { return context_.stores.Groups().RemoveGroup(id); });
  });
}

void EntityCommands::mServerRemove_Click() {
  trap_.Quiet("mServerRemove_Click", [&] {
    RemoveOwner(NodeKind::Server, Text::ConfirmRemoveServer, Text::RemoveServerFailed,
                [&](qint32 id) { return context_.stores.Servers().RemoveServer(id); });
  });
}

void EntityCommands::mTestRemove_Click() {
  trap_.Quiet("mTestRemove_Click", [&] {
    RemoveLeaf(NodeKind::Test, Text::ConfirmRemoveTest,
               [&](qint32 id) { return context_.stores.Tests().RemoveTest(id); });
  });
}

void EntityCommands::mAlertRemove_Click() {
  trap_("mAlertRemove_Click", [&] {
    RemoveLeaf(NodeKind::Alert, Text::ConfirmRemoveAlert,
               [&](qint32 id) { return context_.stores.Alerts().RemoveAlert(id); });
  });
}

void EntityCommands::RemoveOwner(NodeKind kind, Text question, Text refusal, const Operation& remove) {
  if (!boxes_.Confirm(question)) return;
  const qint32 id = IdBehind(kind, SelectedKey());
  if (remove(id)) {
    context_.tree.Nodes().RemoveNode(NodeKey::Make(kind, id));
  } else {
    boxes_.Stop(refusal);
  }
}

void EntityCommands::RemoveLeaf(NodeKind kind, Text question, const Operation& remove) {
  if (!boxes_.Confirm(question)) return;
  const qint32 id = IdBehind(kind, SelectedKey());
  if (!remove(id)) return;
  tree::ObjectTreeModel& nodes = context_.tree.Nodes();
  const QString key = NodeKey::Make(kind, id);
  const QString folder = nodes.ParentOf(key);
  nodes.RemoveNode(key);
  if (nodes.ChildCountOf(folder) == 0) nodes.RemoveNode(folder);
}

// --- Checks ---

void EntityCommands::mGroupCheck_Click() {
  trap_.Quiet("mGroupCheck_Click", [&] {
    Check(NodeKind::Group, SelectedKey(), [&](qint32 id) { return context_.stores.Groups().CheckGroup(id); });
  });
}

void EntityCommands::mServerCheck_Click() {
  trap_.Quiet("mServerCheck_Click", [&] {
    const QString key = SelectedKey();
    if (NodeKey::KindOf(key) != NodeKind::Server) return;
    Check(NodeKind::Server, key, [&](qint32 id) { return context_.stores.Servers().CheckServer(id); });
  });
}

void EntityCommands::mTestCheck_Click() {
  trap_.Quiet("mTestCheck_Click", [&] {
    const QString key = context_.tree.SelectedKey();
    if (NodeKey::KindOf(key) != NodeKind::Test) return;
    Check(NodeKind::Test, key, [&](qint32 id) { return context_.stores.Tests().CheckTest(id); });
  });
}

void EntityCommands::Check(NodeKind kind, const QString& key, const Operation& check) {
  {
    const ui::BusyPointer busy(context_.window);
    std::ignore = check(IdBehind(kind, key));
  }
  commands_.ToolbarClick(QStringLiteral("Refresh"));
}

// --- Type menus ---

void EntityCommands::mServerTest_Click(int index) {
  trap_("mServerTest_Click", [&] {
    const qint32 idTestType = TypeId("mServerTest", index);
    common_.AddTestToServer(IdBehind(NodeKind::Server, SelectedNode()), idTestType);
  });
}

void EntityCommands::mServerAlert_Click(int index) {
  trap_("mServerAlert_Click", [&] {
    const qint32 idAlertType = TypeId("mServerAlert", index);
    const QString key = SelectedNode();
    if (NodeKey::KindOf(key) != NodeKind::Server) return;
    alerts_.AddServerAlertNode(NodeKey::IdOf(key), idAlertType);
  });
}

void EntityCommands::mGroupAlert_Click(int index) {
  trap_("mGroupAlert_Click", [&] {
    const qint32 idAlertType = TypeId("mGroupAlert", index);
    // After a command before this one the tree's selected node may be the alert that was added; the group stays the
    // selected key.
    const QString node = context_.tree.SelectedKey();
    const QString group = NodeKey::KindOf(node) == NodeKind::Group ? node : SelectedKey();
    alerts_.AddGroupAlertNode(IdBehind(NodeKind::Group, group), idAlertType);
  });
}

QString EntityCommands::SelectedNode() const {
  const QString key = SelectedKey();
  if (!context_.tree.Nodes().Contains(key)) {
    throw Error(QStringLiteral("There is no node with the key \"%1\".").arg(key.left(80)));
  }
  return key;
}

qint32 EntityCommands::TypeId(const char* menuArray, int index) const {
  bool ok = false;
  const qint32 id = commands_.TypeTag(QLatin1String(menuArray), index).toString().toInt(&ok);
  if (!ok) throw Error(QStringLiteral("This menu entry stands for no type."));
  return id;
}

}  // namespace quarl::editors
