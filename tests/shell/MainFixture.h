#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QLineEdit>
#include <QSet>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "shell/Main.h"
#include "store/sql/SqlStores.h"
#include "support/DialogDriver.h"
#include "support/FaultyStores.h"
#include "support/ScriptedCalls.h"
#include "support/SteppedService.h"
#include "support/Text.h"
#include "tree/TreeDragMark.h"

namespace quarl::shell {

/// The real main window on a real store in a folder of its own, which is the application folder as well.
class MainFixture : public ::testing::Test {
 protected:
  MainFixture();

  QString Folder(const char* below = "") const { return folder_.path() + Q(below); }
  /// Installs the modules that the build made: these tests and alerts.
  void InstallTypes();
  qint32 AddServer(const char* name, qint32 idGroup = 0);
  /// Makes the window on the stores with their faults, runs its start-up and shows it.
  Main& Start() { return Start(calls_); }
  Main& Start(plugins::ModuleCalls& modules);
  Main& Window() { return *window_; }

  // --- The user ---
  /// The middle of a node's text, which is scrolled to.
  QPoint PointOf(const QString& key) const;
  QPoint RowPoint(int row) const { return List().visualRect(Rows().index(row, 0)).center(); }
  void ClickNode(const QString& key, Qt::MouseButton button = Qt::LeftButton) const;
  void Click(const char* key, Qt::MouseButton button = Qt::LeftButton) const { ClickNode(Q(key), button); }
  void ClickRow(int row, Qt::MouseButton button = Qt::LeftButton) const;
  /// Chooses a command. What is grey cannot be chosen.
  void Choose(const char* item) const;
  /// Starts a rename, types a name and ends the edit with a key.
  void Rename(const QString& name, Qt::Key end = Qt::Key_Return, const char* item = "mTestRename") const;
  void ExpectQuestion(const char* text, const char* answer = "NoButton");
  /// A message about a fault of the store comes.
  void ExpectFault(const char* tag);
  /// A tick of one of the window's timers, without waiting for it.
  void Tick(const char* timer) const;

  // --- What is there then ---
  QAction* Action(const QString& name) const;
  tree::ObjectTree& Tree() const;
  tree::ContentList& List() const;
  tree::ObjectTreeModel& Nodes() const { return Tree().Nodes(); }
  tree::ContentListModel& Rows() const { return List().Rows(); }
  QLineEdit* NameEditor() const { return Tree().viewport()->findChild<QLineEdit*>(); }
  QTimer& Timer(const char* name) const { return *window_->findChild<QTimer*>(Q(name)); }
  QString Children(const char* key) const { return Nodes().ChildrenOf(Q(key)).join(u' '); }
  QString Parent(const char* key) const { return Nodes().ParentOf(Q(key)); }
  /// The node that is marked as the place of a drop.
  QString DropHighlight() const { return static_cast<tree::TreeDragMark*>(Tree().itemDelegate())->Key(); }
  /// The name of the menu that has popped up, which is closed then.
  static QString TakePopUp();
  /// The names of all commands of a kind that are enabled: items of menus, or toolbar buttons.
  QSet<QString> EnabledItems() const;
  QSet<QString> EnabledButtons() const;
  /// Calls that fill the detail list.
  int Refills() const;
  /// Statements that an act executes.
  quint64 Statements(const std::function<void()>& act) const;
  /// Fails when the tree is another one than a fresh start would show.
  void ExpectTreeLikeFresh();

  QTemporaryDir folder_;
  testing::SteppedService service_;
  store::SqlStores stores_;
  store::FaultyStores faulty_{stores_};
  testing::ScriptedCalls calls_;
  testing::DialogDriver dialogs_;
  std::unique_ptr<Main> window_;
};

/// The window on a store that holds groups 1 "Berlin", 2 "Moscow" and 3 "Berlin"; servers 4 "alpha" and 5 "beta" in 1,
/// 6 "Gamma" in 2, 7 "omega" in the root group; tests 1 and 2 on alpha; alerts 1 and 2 of alpha, 3 of Moscow. Test
/// types are 1 "ping" and 2 "http", alert types 1 "email" and 2 "webhook".
class FilledFixture : public MainFixture {
 protected:
  FilledFixture();
};

}  // namespace quarl::shell
