#pragma once

#include <QPalette>

namespace quarl::ui {

/// Makes the program dark where the desktop asks for it and the platform's theme does not see to that itself: the
/// Fusion style with a light palette, and "prefer dark" in the desktop portal's settings. Asked once, bounded by a
/// fraction of a second; to be called after QApplication is made and before any window is.
void FollowDesktopColourScheme();

/// The dark palette for Fusion.
QPalette DarkPalette();

}  // namespace quarl::ui
