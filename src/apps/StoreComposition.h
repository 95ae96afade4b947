#pragma once

#include <functional>
#include <future>
#include <memory>
#include <vector>

#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "control/ServiceControl.h"
#include "store/sql/SqlStores.h"

namespace quarl::apps {

/// The store of this program's user, put together from the environment (StoreLocation::FromEnvironment). Making one
/// neither reads the environment nor touches a file: a location that cannot be understood is a StoreError of whatever
/// asks for the store, every time. One thread at a time, like every Stores.
class StoreComposition final : public store::Stores {
 public:
  explicit StoreComposition(InstallPaths paths = InstallPaths::OfThisProgram());

  /// What the store is made of. Its pointers live as long as this object. Throws StoreError.
  [[nodiscard]] store::SqlSetup Setup();
  /// The same for a store in another place.
  [[nodiscard]] store::SqlSetup Setup(store::StoreLocation location);
  /// How the store lets time pass while it waits for checks; see SqlSetup. Before the first use.
  void SetPause(std::function<void(int ms)> pause) { pause_ = std::move(pause); }
  /// Opens the store and reads the tree on a thread of its own, while the program does something else. The next use of
  /// the store waits for the end and throws what went wrong. CheckAside() is to follow.
  void OpenAhead();
  /// SqlStores::CheckAside() for what OpenAhead() has opened. Throws StoreError for what was found.
  [[nodiscard]] bool CheckAside();
  /// The store itself, for what the interfaces do not offer. Throws StoreError.
  [[nodiscard]] store::SqlStores& Sql();

  store::SystemConfig& System() override { return Sql().System(); }
  store::ServerStore& Servers() override { return Sql().Servers(); }
  store::GroupStore& Groups() override { return Sql().Groups(); }
  store::TestStore& Tests() override { return Sql().Tests(); }
  store::AlertStore& Alerts() override { return Sql().Alerts(); }
  store::LogStore& Log() override { return Sql().Log(); }
  store::InstallConfig& Install() override { return Sql().Install(); }
  store::TreeReader& Tree() override { return Sql().Tree(); }
  std::unique_ptr<store::Change> BeginChange() override { return Sql().BeginChange(); }

 private:
  store::SqlStores& Made();
  control::ServiceControl* ServiceOf(const store::StoreLocation& location);

  InstallPaths paths_;
  SystemClock clock_;
  std::function<void(int)> pause_;
  std::vector<std::unique_ptr<control::ServiceControl>> services_;  ///< one a setup
  std::unique_ptr<store::SqlStores> sql_;
  std::future<void> opening_;
};

}  // namespace quarl::apps
