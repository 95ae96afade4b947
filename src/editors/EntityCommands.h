#pragma once

#include <functional>

#include "editors/AlertNodes.h"
#include "editors/CommandPort.h"
#include "editors/EditorContext.h"
#include "tree/Common.h"
#include "ui/ErrorTrap.h"

namespace quarl::editors {

/// The commands that add, open, remove and check groups, servers, tests and alerts. Each acts on the selected key or
/// on the tree's selected node, confirms a removal, changes the store and then the tree. None throws Error: some show
/// an unexpected error with the tag of the main window's procedure, the others end with a line in the log.
/// User-interface thread only.
class EntityCommands {
 public:
  /// @param common, commands borrowed; must outlive the commands, as everything in the context.
  EntityCommands(EditorContext context, tree::Common& common, CommandPort& commands);

  void mGroupAdd_Click();
  void mGroupProperties_Click();
  void mGroupRemove_Click();
  void mGroupAddServer_Click();
  /// @param index of the menu element, from 1.
  void mGroupAlert_Click(int index);
  void mGroupCheck_Click();
  void mServerProperties_Click();
  void mServerRemove_Click();
  void mServerTest_Click(int index);
  void mServerAlert_Click(int index);
  void mServerCheck_Click();
  void mTestRemove_Click();
  void mTestCheck_Click();
  void mAlertRemove_Click();

 private:
  using Operation = std::function<bool(qint32 id)>;

  void EditServer(qint32 id);
  /// With the text of a refusal; the node goes with everything below it.
  void RemoveOwner(NodeKind kind, Text question, Text refusal, const Operation& remove);
  /// A refusal is silent; an emptied folder goes as well.
  void RemoveLeaf(NodeKind kind, Text question, const Operation& remove);
  void Check(NodeKind kind, const QString& key, const Operation& check);
  QString SelectedKey() const { return context_.selection.SelectedKey(); }
  /// Throws Error when the tree has no node with the selected key.
  QString SelectedNode() const;
  qint32 TypeId(const char* menuArray, int index) const;

  EditorContext context_;
  tree::Common& common_;
  CommandPort& commands_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  AlertNodes alerts_;
};

}  // namespace quarl::editors
