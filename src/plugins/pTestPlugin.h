#pragma once

#include "plugins/ManagerDialog.h"

namespace quarl::plugins {

/// The dialog "Test plug-in": the installed test modules.
class pTestPlugin : public ManagerDialog {
 public:
  explicit pTestPlugin(const ManagerContext& context);
};

}  // namespace quarl::plugins
