#pragma once

#include <QWidget>

#include "apps/StoreComposition.h"

namespace quarl::apps {

/// Checks the store that was opened ahead once the window has had the time to appear, and tells in a box what is wrong
/// with it. Both live as long as the event loop.
void CheckWhenShown(StoreComposition& stores, QWidget& window);

}  // namespace quarl::apps
