#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QSet>
#include <QTemporaryDir>
#include <memory>

#include "control/ServiceControl.h"
#include "shell/Main.h"
#include "store/sql/SqlStores.h"
#include "support/DialogDriver.h"

namespace quarl::shell {

inline QString Q(const char* text) {
  return QString::fromUtf8(text);
}

/// A monitoring service in the state that a test gives it.
class SteppedService : public control::ServiceControl {
 public:
  control::ServiceState State() override { return state; }
  bool Start() override { return ++starts > 0; }
  bool Stop() override { return ++stops > 0; }

  control::ServiceState state = control::ServiceState::NotInstalled;
  int starts = 0;
  int stops = 0;
};

/// The real main window on a real store in a folder of its own, which is the application folder as well.
class MainFixture : public ::testing::Test {
 protected:
  MainFixture();

  QString Folder(const char* below = "") const { return folder_.path() + Q(below); }
  /// Installs the modules that the build made: these tests and alerts.
  void InstallTypes();
  qint32 AddServer(const char* name, qint32 idGroup = 0);
  /// Makes the window, runs its start-up and shows it.
  Main& Start();
  Main& Window() { return *window_; }

  QAction* Action(const QString& name) const;
  tree::ObjectTree& Tree() const;
  tree::ContentList& List() const;
  /// Clicks the middle of a node's text with the left button.
  void ClickNode(const QString& key) const;
  /// The names of all commands of a kind that are enabled: items of menus, or toolbar buttons.
  QSet<QString> EnabledItems() const;
  QSet<QString> EnabledButtons() const;

  QTemporaryDir folder_;
  SteppedService service_;
  store::SqlStores stores_;
  testing::DialogDriver dialogs_;
  std::unique_ptr<Main> window_;
};

}  // namespace quarl::shell
