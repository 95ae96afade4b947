#include "base/NodeKey.h"
#include "netscan/ScanWizard.h"
#include "plugins/pAlertPlugin.h"
#include "plugins/pTestPlugin.h"
#include "shell/Main.h"

// The window's event procedures for tree, list and commands.
namespace quarl::shell {

// --- Tree and list ---

bool Main::KVCTree_AfterLabelEdit(const QString& key, const QString& text) {
  return trap_("KVCTree_AfterLabelEdit", [&] { return hands_.tree.AfterLabelEdit(key, text); });
}

void Main::KVCTree_KeyDown(const QKeyEvent& event) {
  trap_("KVCTree_KeyDown", [&] { hands_.tree.KeyDown(event); });
}

void Main::KVCTree_MenuKey() {
  trap_.Quiet("KVCTree_MouseUp", [&] { hands_.tree.MenuKey(); });
}

void Main::KVCTree_MouseDown(Qt::MouseButton button, const QPoint& position) {
  trap_("KVCTree_MouseDown", [&] { hands_.drag.MouseDown(button, position); });
}

bool Main::KVCTree_MouseMove(Qt::MouseButtons buttons, const QPoint& position) {
  return trap_("KVCTree_MouseMove", [&] { return hands_.drag.MouseMove(buttons, position); });
}

void Main::KVCTree_MouseUp(Qt::MouseButton button, const QPoint& position) {
  trap_.Quiet("KVCTree_MouseUp", [&] {
    hands_.drag.MouseUp();
    hands_.tree.MouseUp(button, position);
  });
}

bool Main::KVCTree_DragOver(const QMimeData& source, const QPoint& position) {
  return trap_("KVCTree_DragOver", [&] { return hands_.drag.DragOver(source, position); });
}

void Main::KVCTree_DragDrop() {
  trap_("KVCTree_DragDrop", [&] { hands_.drag.DragDrop(); });
}

void Main::Form_DragOver() {
  trap_("Form_DragOver", [&] { hands_.drag.DragLeave(); });
}

void Main::scrollTimer_Timer() {
  trap_("scrollTimer_Timer", [&] { hands_.drag.ScrollTick(); });
}

void Main::KVCContent_Click() {
  trap_("KVCContent_Click", [&] { hands_.list.Click(); });
}

void Main::KVCContent_DblClick() {
  trap_("KVCContent_DblClick", [&] { hands_.list.DblClick(); });
}

void Main::KVCContent_KeyDown(const QKeyEvent& event) {
  trap_.Quiet("KVCContent_KeyDown", [&] { hands_.list.KeyDown(event); });
}

void Main::KVCContent_MouseUp(Qt::MouseButton button, const QPoint& position) {
  trap_("KVCContent_MouseUp", [&] { hands_.list.MouseUp(button, position); });
}

void Main::KVCContent_MenuKey() {
  trap_("KVCContent_MouseUp", [&] { hands_.list.MenuKey(); });
}

void Main::PopUp(const QString& menu, const QPoint& globalPosition) {
  trap_.Quiet("PopUp", [&] { controls_.Menu(menu)->popup(globalPosition); });
}

void Main::Remove(NodeKind kind) {
  if (kind == NodeKind::Group) mGroupRemove_Click();
  if (kind == NodeKind::Server) mServerRemove_Click();
  if (kind == NodeKind::Test) mTestRemove_Click();
  if (kind == NodeKind::Alert) mAlertRemove_Click();
}

QVariant Main::TypeTag(const QString& menuArray, int index) const {
  const QAction* element = controls_.Element(menuArray, index);
  return element ? element->data() : QVariant();
}

// --- Commands; those on groups, servers, tests and alerts have their own traps ---

void Main::mGroupAdd_Click() {
  commands_.entities.mGroupAdd_Click();
}
void Main::mGroupProperties_Click() {
  commands_.entities.mGroupProperties_Click();
}
void Main::mGroupRemove_Click() {
  commands_.entities.mGroupRemove_Click();
}
void Main::mGroupAddServer_Click() {
  commands_.entities.mGroupAddServer_Click();
}
void Main::mGroupAlert_Click(int index) {
  commands_.entities.mGroupAlert_Click(index);
}
void Main::mGroupCheck_Click() {
  commands_.entities.mGroupCheck_Click();
}
void Main::mServerProperties_Click() {
  commands_.entities.mServerProperties_Click();
}
void Main::mServerRemove_Click() {
  commands_.entities.mServerRemove_Click();
}
void Main::mServerTest_Click(int index) {
  commands_.entities.mServerTest_Click(index);
}
void Main::mServerAlert_Click(int index) {
  commands_.entities.mServerAlert_Click(index);
}
void Main::mServerCheck_Click() {
  commands_.entities.mServerCheck_Click();
}
void Main::mTestRemove_Click() {
  commands_.entities.mTestRemove_Click();
}
void Main::mTestCheck_Click() {
  commands_.entities.mTestCheck_Click();
}
void Main::mAlertRemove_Click() {
  commands_.entities.mAlertRemove_Click();
}

void Main::mTestProperties_Click() {
  commands_.properties.mTestProperties_Click();
}
void Main::mAlertProperties_Click() {
  commands_.properties.mAlertProperties_Click();
}
void Main::mAlertTest_Click() {
  commands_.properties.mAlertTest_Click();
}

void Main::mTestPlugin_Click() {
  trap_("mTestPlugin_Click", [&] { plugins::pTestPlugin(commands_.plugins).Run(); });
}

void Main::mAlertPlugin_Click() {
  trap_("mAlertPlugin_Click", [&] { plugins::pAlertPlugin(commands_.plugins).Run(); });
}

void Main::mGroupScanNet_Click() {
  trap_("mGroupScanNet_Click", [&] { netscan::ScanWizard(commands_.scan).Run(); });
}

void Main::mTestRename_Click() {
  trap_("mTestRename_Click", [&] { hands_.tree.Rename(); });
}

void Main::mAlertRename_Click() {
  trap_("mAlertRename_Click", [&] { hands_.tree.Rename(); });
}

void Main::mLogClear_Click() {
  trap_.Quiet("mLogClear_Click", [&] { commands_.logs.Clear(); });
}

void Main::mLogSave_Click() {
  trap_.Quiet("mLogSave_Click", [&] { commands_.logs.Save(); });
}

}  // namespace quarl::shell
