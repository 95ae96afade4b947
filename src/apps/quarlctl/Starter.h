#pragma once

#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "store/Stores.h"

namespace quarl::ctl {

/// Fills a new store with what a first look needs: a default schedule (every 5 minutes from midnight of today on), a
/// type for each module in the plug-in folders, and this machine as first server with a ping test.
/// Throws CommandError when a module is not accepted or the ping module is missing; the store is then half filled.
void FillStarter(store::Stores& stores, const InstallPaths& paths, const Clock& clock);

}  // namespace quarl::ctl
