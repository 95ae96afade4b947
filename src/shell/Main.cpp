#include "shell/Main.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QScopeGuard>
#include <QScreen>
#include <QTimer>

#include "base/NodeKey.h"
#include "shell/ProductInfo.h"
#include "shell/ToolbarTable.h"
#include "shell/frmAbout.h"
#include "shell/frmHelp.h"
#include "shell/frmSplash.h"
#include "ui/BusyPointer.h"

namespace quarl::shell {
namespace {

constexpr QSize kInitialSize(1000, 640);

int MouseX(const QEvent& event) {
  return static_cast<const QMouseEvent&>(event).position().toPoint().x();
}

bool LeftButton(const QEvent& event) {
  return static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
}

}  // namespace

Main::Main(store::Stores& stores, InstallPaths paths, plugins::ModuleCalls& modules)
    : paths_(std::move(paths)),
      boxes_(this),
      trap_(QStringLiteral("Main"), boxes_),
      controls_(*this),
      images_(controls_, stores, paths_),
      typeMenus_(controls_, stores),
      availability_(controls_),
      treeBuilder_(stores, controls_.KVCTree->Nodes(), [this](const QString& text) { boxes_.Plain(text); }),
      contentViews_(stores, controls_.KVCContent->Rows()),
      splitter_(controls_),
      monitor_(controls_, stores),
      commands_(*this, controls_, {stores, paths_, modules}, Ports(), boxes_),
      hands_(controls_, stores, paths_, Ports()) {
  setObjectName(QStringLiteral("Main"));
  setWindowTitle(ProductInfo::kName.toString());
  resize(kInitialSize.boundedTo(screen()->availableGeometry().size() * 9 / 10));
  images_.LoadToolbarImages();
  ConnectCommands();
  ConnectTypeMenus();
  ConnectWidgets();
  controls_.ServiceTimer->start();
}

void Main::ConnectCommands() {
  const auto onClick = [this](const char* item, auto procedure) {
    connect(controls_.Item(QLatin1String(item)), &QAction::triggered, this, procedure);
  };
  onClick("mTestPlugin", &Main::mTestPlugin_Click);
  onClick("mAlertPlugin", &Main::mAlertPlugin_Click);
  onClick("mQuit", &Main::mQuit_Click);
  onClick("mGroupAdd", &Main::mGroupAdd_Click);
  onClick("mGroupProperties", &Main::mGroupProperties_Click);
  onClick("mGroupRemove", &Main::mGroupRemove_Click);
  onClick("mGroupAddServer", &Main::mGroupAddServer_Click);
  onClick("mGroupScanNet", &Main::mGroupScanNet_Click);
  onClick("mGroupCheck", &Main::mGroupCheck_Click);
  onClick("mServerProperties", &Main::mServerProperties_Click);
  onClick("mServerRemove", &Main::mServerRemove_Click);
  onClick("mServerCheck", &Main::mServerCheck_Click);
  onClick("mTestProperties", &Main::mTestProperties_Click);
  onClick("mTestRename", &Main::mTestRename_Click);
  onClick("mTestRemove", &Main::mTestRemove_Click);
  onClick("mTestCheck", &Main::mTestCheck_Click);
  onClick("mAlertProperties", &Main::mAlertProperties_Click);
  onClick("mAlertRename", &Main::mAlertRename_Click);
  onClick("mAlertRemove", &Main::mAlertRemove_Click);
  onClick("mAlertTest", &Main::mAlertTest_Click);
  onClick("mLogClear", &Main::mLogClear_Click);
  onClick("mLogSave", &Main::mLogSave_Click);
  onClick("mHelpGuide", &Main::mHelpGuide_Click);
  onClick("mAbout", &Main::mAbout_Click);
  for (const ToolbarRow& row : kToolbarRows) {
    const QString key = QLatin1String(row.key);
    connect(controls_.Button(key), &QAction::triggered, this, [this, key] { KVCToolbar_ButtonClick(key); });
  }
}

void Main::ConnectTypeMenus() {
  // The entries come and go; their menus stay.
  const auto onEntry = [this](QMenu* menu, auto handler) {
    connect(menu, &QMenu::triggered, this, [menu, handler](QAction* entry) {
      const auto index = static_cast<int>(menu->actions().indexOf(entry)) + 1;
      if (index > 0) handler(entry->objectName(), index);
    });
  };
  onEntry(controls_.Menu(QStringLiteral("mServerAddTest")),
          [this](const QString&, int index) { mServerTest_Click(index); });
  onEntry(controls_.Menu(QStringLiteral("mServerAddAlert")),
          [this](const QString&, int index) { mServerAlert_Click(index); });
  onEntry(controls_.Menu(QStringLiteral("mGroupAddAlert")),
          [this](const QString&, int index) { mGroupAlert_Click(index); });
  for (const char* button : {"TestAdd", "AlertAdd"}) {
    onEntry(controls_.DropDown(QLatin1String(button)),
            [this](const QString& key, int index) { KVCToolbar_ButtonMenuClick(key, index); });
  }
}

void Main::ConnectWidgets() {
  controls_.KVCTree->SetNodeClick([this](const QString& key) { KVCTree_NodeClick(key); });
  controls_.ServiceTimer->callOnTimeout(this, [this] { ServiceTimer_Timer(); });
  controls_.scrollTimer->callOnTimeout(this, [this] { scrollTimer_Timer(); });
  events_.On(controls_.area, QEvent::Resize, [this](QEvent&) { Form_Resize(); });
  events_.On(controls_.imgSplitter, QEvent::MouseButtonPress, [this](QEvent& event) {
    if (LeftButton(event)) imgSplitter_MouseDown();
  });
  events_.On(controls_.imgSplitter, QEvent::MouseMove, [this](QEvent& event) { imgSplitter_MouseMove(MouseX(event)); });
  events_.On(controls_.imgSplitter, QEvent::MouseButtonRelease, [this](QEvent& event) {
    if (LeftButton(event)) imgSplitter_MouseUp();
  });
}

void Main::Form_Load() {
  trap_("Form_Load", [&] { LoadMainWindow(); });
}

void Main::LoadMainWindow() {
  const QPointer<frmSplash> splash = new frmSplash(this);
  splash->ShowAtOnce();
  const auto whenShown = qScopeGuard([splash] {
    // The window is shown after this procedure and would cover the splash.
    if (splash) QTimer::singleShot(0, splash, &QWidget::raise);
  });
  selectedKey_.clear();
  const ui::BusyPointer busy(this);
  Form_Resize();
  splitter_.Align();
  if (!LoadImages()) return;
  LoadMenu();
  treeBuilder_.LoadTree();
  const QString first = controls_.KVCTree->Nodes().ChildrenOf({}).value(0);
  controls_.KVCTree->Select(first);
  KVCTree_NodeClick(first);
}

bool Main::LoadImages() {
  return trap_("LoadImages", [&] {
    images_.LoadImages();
    return true;
  });
}

void Main::LoadMenu() {
  trap_("LoadMenu", [&] { typeMenus_.LoadMenu(); });
}

void Main::UpdateOptions(const QString& key, bool refill) {
  trap_("UpdateOptions", [&] {
    availability_.Apply(key);
    if (refill) Refill(key);
  });
}

void Main::Refill(const QString& key) {
  switch (NodeKey::KindOf(key)) {
    case NodeKind::Group:
      return contentViews_.ShowServerList(NodeKey::IdOf(key));
    case NodeKind::Server:
      return contentViews_.ShowTestList(NodeKey::IdOf(key));
    case NodeKind::Log:
      return contentViews_.ShowLogList();
    default:
      return;
  }
}

void Main::KVCTree_NodeClick(const QString& key) {
  trap_("KVCTree_NodeClick", [&] {
    selectedKey_ = key;
    contentViews_.Clear();
    UpdateOptions(key, true);
  });
}

void Main::KVCToolbar_ButtonClick(const QString& key) {
  trap_("KVCToolbar_ButtonClick", [&] { commands_.toolbar.ButtonClick(key); });
}

void Main::KVCToolbar_ButtonMenuClick(const QString& key, int index) {
  trap_("KVCToolbar_ButtonMenuClick", [&] { commands_.toolbar.ButtonMenuClick(key, index); });
}

void Main::ServiceTimer_Timer() {
  trap_("ServiceTimer_Timer", [&] { monitor_.Refresh(); });
}

void Main::Form_Resize() {
  trap_("Form_Resize", [&] { splitter_.Fit(); });
}

void Main::imgSplitter_MouseDown() {
  trap_("imgSplitter_MouseDown", [&] { splitter_.StartDrag(); });
}

void Main::imgSplitter_MouseMove(int x) {
  trap_("imgSplitter_MouseMove", [&] { splitter_.Drag(x); });
}

void Main::imgSplitter_MouseUp() {
  trap_("imgSplitter_MouseUp", [&] { splitter_.EndDrag(); });
}

void Main::mHelpGuide_Click() {
  trap_("mHelpGuide_Click",
        [&] { frmHelp::Open(paths_.ApplicationFolder() + QStringLiteral("/docs/user-guide.md"), this); });
}

void Main::mAbout_Click() {
  trap_("mAbout_Click", [&] { frmAbout(this).exec(); });
}

void Main::mQuit_Click() {
  const QWidgetList windows = QApplication::topLevelWidgets();
  for (QWidget* window : windows) window->hide();
  QCoreApplication::exit(0);
}

void Main::Form_Unload() {
  mQuit_Click();
}

void Main::closeEvent(QCloseEvent* event) {
  QMainWindow::closeEvent(event);
  Form_Unload();
}

}  // namespace quarl::shell
