#pragma once

#include <QWidget>

#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "editors/EntityCommands.h"
#include "editors/PropertyCommands.h"
#include "logs/LogCommands.h"
#include "netscan/WizardContext.h"
#include "plugins/ManagerContext.h"
#include "shell/MainControls.h"
#include "shell/ToolbarDispatch.h"
#include "store/Stores.h"
#include "tree/Common.h"
#include "tree/ContentEvents.h"
#include "tree/ContentInteractions.h"
#include "tree/TreeDrag.h"
#include "tree/TreeEvents.h"
#include "tree/TreeInteractions.h"
#include "ui/MessageBoxes.h"

namespace quarl::shell {

/// What the main window implements for its parts.
struct MainPorts {
  tree::SelectionPort& selection;
  tree::CommandPort& popUps;
  editors::CommandPort& commands;
  tree::TreeEventPort& treeEvents;
  tree::ContentEventPort& listEvents;
};

/// What the main window borrows for its parts.
struct MainServices {
  store::Stores& stores;
  const InstallPaths& paths;
  plugins::ModuleCalls& modules;
};

/// The parts of the main window that carry out commands of menus and toolbar.
struct MainCommands {
  MainCommands(QWidget& window, MainControls& controls, const MainServices& services, const MainPorts& ports,
               const ui::MessageBoxes& boxes);

  SystemClock clock;
  tree::Common common;
  editors::EditorContext context;
  editors::EntityCommands entities;
  editors::PropertyCommands properties;
  plugins::ManagerContext plugins;
  netscan::WizardContext scan;
  logs::LogCommands logs;
  ToolbarDispatch toolbar;
};

/// The parts of the main window that deal with the user's hands on tree and list.
struct MainHands {
  MainHands(const MainControls& controls, store::Stores& stores, const InstallPaths& paths, const MainPorts& ports);

  tree::TreeInteractions tree;
  tree::TreeDrag drag;
  tree::ContentInteractions list;
  tree::TreeEvents treeEvents;
  tree::ContentEvents listEvents;
};

}  // namespace quarl::shell
