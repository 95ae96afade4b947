#pragma once

#include <QWidget>

#include "base/InstallPaths.h"
#include "plugins/contract/ModuleCalls.h"
#include "store/Stores.h"

namespace quarl::plugins {

/// What the manager dialogs work on. Everything is borrowed and must outlive them.
struct ManagerContext {
  QWidget* window;  ///< the owner of the dialogs
  store::Stores& stores;
  const InstallPaths& paths;
  ModuleCalls& calls;
};

}  // namespace quarl::plugins
