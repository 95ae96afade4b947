#pragma once

#include <QAction>
#include <QFrame>
#include <QHash>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QStatusBar>
#include <QString>
#include <QTimer>
#include <QToolBar>

#include "tree/ContentList.h"
#include "tree/ObjectTree.h"
#include "ui/ImageList.h"

namespace quarl::shell {

/// The controls of the main window under their names, which are their object names as well. The window owns the
/// widgets and timers; the image lists live here, so that this struct must outlive the views' use of them.
struct MainControls {
  /// Builds everything into the window, without pictures and without data.
  explicit MainControls(QMainWindow& window);
  MainControls(const MainControls&) = delete;
  MainControls& operator=(const MainControls&) = delete;

  /// The item of the menu bar or the toolbar button of a name. Throws Error for a name that is none.
  QAction* Item(const QString& name) const;
  QAction* Button(const QString& key) const;
  /// The menu of a title, of an item with a menu of its own, and of a drop-down button. Throws as above.
  QMenu* Menu(const QString& name) const;
  QMenu* DropDown(const QString& key) const;
  /// An element of a menu array, counted from 1; null where there is none.
  QAction* Element(const QString& array, int index) const;

  QTimer* scrollTimer = nullptr;
  QTimer* ServiceTimer = nullptr;
  QWidget* area = nullptr;  ///< what is between toolbar and status bar; tree, splitter and list are placed in it
  tree::ObjectTree* KVCTree = nullptr;
  QWidget* imgSplitter = nullptr;
  QFrame* picSplitter = nullptr;
  tree::ContentList* KVCContent = nullptr;
  QToolBar* KVCToolbar = nullptr;
  QStatusBar* KVCStatusBar = nullptr;
  QLabel* servicePanel = nullptr;  ///< panel 1 of the status bar
  ui::ImageList KCVImageList;
  ui::ImageList KVCImageListDisabled;
  QHash<QString, QAction*> items;
  QHash<QString, QAction*> buttons;

 private:
  void BuildTimers(QMainWindow& window);
  void BuildMenus(QMainWindow& window);
  void BuildToolbar(QMainWindow& window);
  void BuildViews(QMainWindow& window);
  void BuildStatusBar(QMainWindow& window);
};

/// The object name of an element of a menu array; indices begin at 1.
QString MenuElementName(const QString& array, int index);

}  // namespace quarl::shell
