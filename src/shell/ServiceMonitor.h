#pragma once

namespace quarl::store {
class Stores;
}

namespace quarl::shell {

struct MainControls;

/// Shows the monitoring service's state in the first panel of the status bar, and enables the buttons that start and
/// stop it as the last settled state allows.
class ServiceMonitor {
 public:
  ServiceMonitor(const MainControls& controls, store::Stores& stores) : controls_(controls), stores_(stores) {}
  /// Asks for the state once. Throws StoreError with panel and buttons unchanged. While a dialog is open, or a command
  /// waits, it does nothing, so that a poll never falls into a command.
  void Refresh();

 private:
  const MainControls& controls_;
  store::Stores& stores_;
};

}  // namespace quarl::shell
