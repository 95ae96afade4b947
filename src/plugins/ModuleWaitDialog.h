#pragma once

#include <QPointer>
#include <QWidget>
#include <chrono>

#include "plugins/contract/ModuleWait.h"

namespace quarl::plugins {

/// Waits for a call of a module while the console stays painted and its timers run. All windows of the console are
/// blocked for input. The pointer over them is busy as long as no dialog of the module is up; when that lasts, a small
/// dialog ("ModuleWait") offers to cancel the call.
class ModuleWaitDialog final : public ModuleWait {
 public:
  /// @param window the console's main window; may be null
  explicit ModuleWaitDialog(QWidget* window, std::chrono::milliseconds cancelAfter = std::chrono::milliseconds(3000));

  /// For a wait that is made before the window.
  void SetWindow(QWidget* window) { window_ = window; }
  /// The topmost modal dialog, or the main window.
  std::uint64_t OwnerWindow() const override;
  void Wait(HostCall& call) override;

 private:
  QWidget* Top() const;

  QPointer<QWidget> window_;
  std::chrono::milliseconds cancelAfter_;
};

}  // namespace quarl::plugins
