#pragma once

namespace quarl::ui {

/// Lets time pass within a command: windows are painted and timers run, what the user types and clicks waits.
/// User-interface thread only.
class PaintingPause {
 public:
  static void Run(int ms);
  /// Whether the program is inside Run(): a timer's procedure must not use what the interrupted command uses.
  static bool IsOn();
};

}  // namespace quarl::ui
