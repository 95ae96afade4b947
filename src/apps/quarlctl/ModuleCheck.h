#pragma once

#include <QStringList>

#include "base/InstallPaths.h"
#include "store/Configuration.h"

namespace quarl::ctl {

/// One sentence for each type of a configuration whose module the plug-in folder does not hold whole. The console
/// shows no tree while there is one.
QStringList ModuleFaults(const store::Configuration& configuration, const InstallPaths& paths);

}  // namespace quarl::ctl
