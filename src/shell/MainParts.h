#pragma once

#include <QWidget>

#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "editors/EntityCommands.h"
#include "logs/LogCommands.h"
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

/// The parts of the main window that carry out commands of menus and toolbar.
struct MainCommands {
  MainCommands(QWidget& window, const MainControls& controls, store::Stores& stores, const MainPorts& ports,
               const ui::MessageBoxes& boxes);

  SystemClock clock;
  tree::Common common;
  editors::EntityCommands entities;
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
