#pragma once

#include <cstdint>

#include "quarl_module.h"

/// Fills ShowForm and ShowText of the host as far as its size reaches. Both make the process's QApplication at their
/// first use where there is none. 0: filled; negative: the host is too small for them.
/// @param host alive until the process ends; its Log is told why something could not be shown
/// @param ownerWindow X11 window above which the dialogs stand; 0 for none
/// @param applicationTitle UTF-8
extern "C" __attribute__((visibility("default"))) int16_t QuarlFormsOpen(QuarlHost* host, uint64_t ownerWindow,
                                                                         const char* applicationTitle);
