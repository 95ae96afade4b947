#pragma once

#include <functional>
#include <string>

#include "kit/PropertiesCache.h"
#include "quarl_module.h"

namespace quarl::kit {

/// How trying the values on the screen ended, for people.
struct Attempt {
  bool good = false;
  std::string report;
};

/// What the dialog of a module's properties needs to know. It is kept until the process ends, because a trial that the
/// user does not wait for may outlast the dialog.
struct PropertyDialog {
  const Form* form;
  Judge judge;
  std::string tryLabel;
  std::function<Attempt(const Properties&)> attempt;
};

/// Shows the dialog and writes the confirmed properties back, padded with NULs. 0: confirmed, 1: cancelled, negative:
/// could not be shown. Main thread.
int16_t RunPropertyDialog(const PropertyDialog& dialog, QuarlBuffer properties);

}  // namespace quarl::kit
