#pragma once

#include <QMainWindow>

#include "base/InstallPaths.h"
#include "shell/CommandAvailability.h"
#include "shell/EventHooks.h"
#include "shell/ImageLoader.h"
#include "shell/MainControls.h"
#include "shell/MainParts.h"
#include "shell/ServiceMonitor.h"
#include "shell/SplitterLayout.h"
#include "shell/TypeMenus.h"
#include "store/Stores.h"
#include "tree/ContentViews.h"
#include "tree/TreeBuilder.h"
#include "ui/ErrorTrap.h"
#include "ui/MessageBoxes.h"

namespace quarl::shell {

/// The console's main window: one function for each of its event procedures, each with the window's error trap; what
/// they do is the business of the parts. It holds the key of the object that commands act on. User-interface thread.
class Main : public QMainWindow,
             private tree::SelectionPort,
             private tree::CommandPort,
             private editors::CommandPort,
             private tree::TreeEventPort,
             private tree::ContentEventPort {
 public:
  /// @param stores, modules borrowed; must outlive the window.
  Main(store::Stores& stores, InstallPaths paths, plugins::ModuleCalls& modules);

  /// Start-up: shows the splash window and loads images, menus and tree. To be called once, before the window is shown.
  void Form_Load();
  /// False when an image could not be had; the user has seen why.
  bool LoadImages();
  void LoadMenu();
  void UpdateOptions(const QString& key, bool refill) override;
  const QString& SelectedKey() const override { return selectedKey_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void SetSelectedKey(const QString& key) override { selectedKey_ = key; }
  void NodeClick(const QString& key) override { KVCTree_NodeClick(key); }
  void Remove(NodeKind kind) override;
  void PopUp(const QString& menu, const QPoint& globalPosition) override;
  void ToolbarClick(const QString& button) override { KVCToolbar_ButtonClick(button); }
  QVariant TypeTag(const QString& menuArray, int index) const override;

  bool KVCTree_AfterLabelEdit(const QString& key, const QString& text) override;
  void KVCTree_KeyDown(const QKeyEvent& event) override;
  void KVCTree_MenuKey() override;
  void KVCTree_MouseDown(Qt::MouseButton button, const QPoint& position) override;
  bool KVCTree_MouseMove(Qt::MouseButtons buttons, const QPoint& position) override;
  void KVCTree_MouseUp(Qt::MouseButton button, const QPoint& position) override;
  bool KVCTree_DragOver(const QMimeData& source, const QPoint& position) override;
  void KVCTree_DragDrop() override;
  void Form_DragOver() override;
  void KVCContent_Click() override;
  void KVCContent_DblClick() override;
  void KVCContent_KeyDown(const QKeyEvent& event) override;
  void KVCContent_MouseUp(Qt::MouseButton button, const QPoint& position) override;
  void KVCContent_MenuKey() override;

  MainPorts Ports() { return {*this, *this, *this, *this, *this}; }
  void ConnectCommands();
  void ConnectTypeMenus();
  void ConnectWidgets();

  void Form_Resize();
  void Form_Unload();
  void KVCTree_NodeClick(const QString& key);
  void KVCToolbar_ButtonClick(const QString& key);
  void KVCToolbar_ButtonMenuClick(const QString& key, int index);
  void scrollTimer_Timer();
  void ServiceTimer_Timer();
  void imgSplitter_MouseDown();
  void imgSplitter_MouseMove(int x);
  void imgSplitter_MouseUp();
  void mTestPlugin_Click();
  void mAlertPlugin_Click();
  void mQuit_Click();
  void mGroupAdd_Click();
  void mGroupProperties_Click();
  void mGroupRemove_Click();
  void mGroupAddServer_Click();
  void mGroupAlert_Click(int index);
  void mGroupScanNet_Click();
  void mGroupCheck_Click();
  void mServerProperties_Click();
  void mServerRemove_Click();
  void mServerTest_Click(int index);
  void mServerAlert_Click(int index);
  void mServerCheck_Click();
  void mTestProperties_Click();
  void mTestRename_Click();
  void mTestRemove_Click();
  void mTestCheck_Click();
  void mAlertProperties_Click();
  void mAlertRename_Click();
  void mAlertRemove_Click();
  void mAlertTest_Click();
  void mLogClear_Click();
  void mLogSave_Click();
  void mHelpGuide_Click();
  void mAbout_Click();

  void LoadMainWindow();
  void Refill(const QString& key);

  InstallPaths paths_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  MainControls controls_;
  EventHooks events_;
  QString selectedKey_;
  ImageLoader images_;
  TypeMenus typeMenus_;
  CommandAvailability availability_;
  tree::TreeBuilder treeBuilder_;
  tree::ContentViews contentViews_;
  SplitterLayout splitter_;
  ServiceMonitor monitor_;
  MainCommands commands_;
  MainHands hands_;
};

}  // namespace quarl::shell
