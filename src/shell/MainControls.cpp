#include "shell/MainControls.h"

#include <QMenuBar>
#include <QToolButton>

#include "base/Error.h"
#include "shell/MenuTable.h"
#include "shell/ToolbarTable.h"

namespace quarl::shell {
namespace {

constexpr int kTreeWidth = 280;
constexpr int kSplitterWidth = 5;
constexpr int kPanelIndent = 4;

QAction* Find(const QHash<QString, QAction*>& actions, const QString& name) {
  QAction* action = actions.value(name);
  if (!action) throw Error(QStringLiteral("The main window has no command \"%1\".").arg(name));
  return action;
}

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(QLatin1String(name));
  return widget;
}

QAction* NewMenu(QMenu* menu, const MenuRow& row) {
  menu->setObjectName(QLatin1String(row.name));
  if (row.array) {
    QAction* first = menu->addAction(QString());
    first->setObjectName(MenuElementName(QLatin1String(row.array), 1));
  }
  return menu->menuAction();
}

QAction* NewItem(QMenu* parent, const MenuRow& row) {
  const QString caption = QLatin1String(row.caption);
  if (row.array) return NewMenu(parent->addMenu(caption), row);
  if (caption == QLatin1String("-")) return parent->addSeparator();
  QAction* item = parent->addAction(caption);
  item->setMenuRole(QAction::NoRole);
  if (row.shortcut) item->setShortcut(QKeySequence(QLatin1String(row.shortcut), QKeySequence::PortableText));
  return item;
}

void NameButton(QToolBar* toolbar, QAction* action, const ToolbarRow& row) {
  auto* button = qobject_cast<QToolButton*>(toolbar->widgetForAction(action));
  button->setObjectName(QLatin1String(row.key));
  button->setAccessibleName(QLatin1String(row.key));
  button->setAccessibleDescription(QLatin1String(row.toolTip));
  button->setFocusPolicy(Qt::TabFocus);  // not all of them are in the menus as well
  if (row.style == ButtonStyle::DropDown) button->setPopupMode(QToolButton::MenuButtonPopup);
  if (!row.elsewhere) button->setFocusPolicy(Qt::TabFocus);
}

}  // namespace

MainControls::MainControls(QMainWindow& window) {
  BuildTimers(window);
  BuildMenus(window);
  BuildToolbar(window);
  BuildViews(window);
  BuildStatusBar(window);
}

QAction* MainControls::Item(const QString& name) const {
  return Find(items, name);
}

QAction* MainControls::Button(const QString& key) const {
  return Find(buttons, key);
}

QMenu* MainControls::Menu(const QString& name) const {
  auto* menu = Item(name)->menu<QMenu*>();
  if (!menu) throw Error(QStringLiteral("\"%1\" has no menu.").arg(name));
  return menu;
}

QMenu* MainControls::DropDown(const QString& key) const {
  auto* menu = Button(key)->menu<QMenu*>();
  if (!menu) throw Error(QStringLiteral("\"%1\" has no drop-down entries.").arg(key));
  return menu;
}

QAction* MainControls::Element(const QString& array, int index) const {
  for (const MenuRow& row : kMenuRows) {
    if (row.array && array == QLatin1String(row.array))
      return Menu(QLatin1String(row.name))->actions().value(index - 1);
  }
  return nullptr;
}

void MainControls::BuildTimers(QMainWindow& window) {
  scrollTimer = Named(new QTimer(&window), "scrollTimer");
  scrollTimer->setInterval(200);
  ServiceTimer = Named(new QTimer(&window), "ServiceTimer");
  ServiceTimer->setInterval(5000);
}

void MainControls::BuildMenus(QMainWindow& window) {
  for (const MenuRow& row : kMenuRows) {
    const QString name = QLatin1String(row.name);
    const QString parent = QLatin1String(row.parent);
    QAction* item = parent.isEmpty() ? NewMenu(window.menuBar()->addMenu(QLatin1String(row.caption)), row)
                                     : NewItem(Menu(parent), row);
    item->setObjectName(name);
    items.insert(name, item);
  }
}

void MainControls::BuildToolbar(QMainWindow& window) {
  KVCToolbar = Named(new QToolBar(&window), "KVCToolbar");
  KVCToolbar->setWindowTitle(QStringLiteral("Toolbar"));
  KVCToolbar->setAccessibleName(QStringLiteral("KVCToolbar"));
  KVCToolbar->setMovable(false);
  KVCToolbar->setContextMenuPolicy(Qt::PreventContextMenu);
  KVCToolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
  for (const ToolbarRow& row : kToolbarRows) {
    const QString key = QLatin1String(row.key);
    QAction* button = Named(new QAction(QLatin1String(row.toolTip), &window), row.key);
    button->setToolTip(QLatin1String(row.toolTip));
    if (row.style == ButtonStyle::DropDown) button->setMenu(new QMenu(&window));
    KVCToolbar->addAction(button);
    NameButton(KVCToolbar, button, row);
    if (row.separatorAfter) KVCToolbar->addSeparator();
    buttons.insert(key, button);
  }
  window.addToolBar(Qt::TopToolBarArea, KVCToolbar);
}

void MainControls::BuildViews(QMainWindow& window) {
  area = new QWidget(&window);
  window.setCentralWidget(area);
  const tree::IconSource icons = [this](const QString& key) { return KCVImageList.Icon(key); };
  auto* nodes = new tree::ObjectTreeModel(icons, &window);
  KVCTree = Named(new tree::ObjectTree(*nodes, area), "KVCTree");
  KVCTree->setAccessibleName(QStringLiteral("KVCTree"));
  KVCTree->setGeometry(0, 3, kTreeWidth, 100);
  imgSplitter = Named(new QWidget(area), "imgSplitter");
  imgSplitter->setAccessibleName(QStringLiteral("imgSplitter"));
  imgSplitter->setGeometry(kTreeWidth, 3, kSplitterWidth, 100);
  imgSplitter->setCursor(Qt::SplitHCursor);
  auto* rows = new tree::ContentListModel(icons, &window);
  KVCContent = Named(new tree::ContentList(*rows, area), "KVCContent");
  KVCContent->setAccessibleName(QStringLiteral("KVCContent"));
  KVCContent->setGeometry(kTreeWidth + kSplitterWidth, 3, 100, 100);
  KVCTree->setFocus();
  // As children of their views the models go last.
  nodes->setParent(KVCTree);
  rows->setParent(KVCContent);
  picSplitter = Named(new QFrame(area), "picSplitter");
  picSplitter->setAutoFillBackground(true);
  picSplitter->setBackgroundRole(QPalette::Highlight);
  picSplitter->hide();
}

void MainControls::BuildStatusBar(QMainWindow& window) {
  KVCStatusBar = Named(window.statusBar(), "KVCStatusBar");
  KVCStatusBar->setAccessibleName(QStringLiteral("KVCStatusBar"));
  servicePanel = Named(new QLabel(KVCStatusBar), "KVCStatusBar_Panel1");
  servicePanel->setTextFormat(Qt::PlainText);
  servicePanel->setIndent(kPanelIndent);
  KVCStatusBar->addWidget(servicePanel, 1);
}

QString MenuElementName(const QString& array, int index) {
  return array + u'_' + QString::number(index);
}

}  // namespace quarl::shell
