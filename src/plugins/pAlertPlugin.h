#pragma once

#include "plugins/ManagerDialog.h"

namespace quarl::plugins {

/// The dialog "Alert Plug-in": the installed alert modules.
class pAlertPlugin : public ManagerDialog {
 public:
  explicit pAlertPlugin(const ManagerContext& context);
};

}  // namespace quarl::plugins
