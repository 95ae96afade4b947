#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "apps/StoreComposition.h"
#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "store/sql/SqlStores.h"

namespace quarl::ctl {

/// Where the store of this run is and what it is put together from. Stores that it makes borrow from it.
class StoreAccess {
 public:
  /// The option's text; without it the environment decides.
  void SetLocation(const QString& text) { location_ = text; }
  /// The store's place. Throws StoreError for a location that cannot be understood or is no file.
  [[nodiscard]] store::StoreLocation Location() const;
  /// Something has the name of the store's file, whatever it is.
  [[nodiscard]] bool Exists() const;
  [[nodiscard]] store::SqlSetup Setup(const store::StoreLocation& location) { return composition_.Setup(location); }
  /// Throws StoreError when there is no store, instead of making one, or when it cannot be opened.
  [[nodiscard]] std::unique_ptr<store::SqlStores> OpenExisting();
  const InstallPaths& Paths() const { return paths_; }
  const Clock& TheClock() const { return clock_; }

 private:
  std::optional<QString> location_;
  InstallPaths paths_ = InstallPaths::OfThisProgram();
  apps::StoreComposition composition_{paths_};
  SystemClock clock_;
};

/// A store that is made under another name beside its place and gets its own name when it is complete; until then
/// nobody finds it, and without Keep() nothing of it stays.
class NewStore {
 public:
  /// Throws CommandError when something exists in its place, StoreError when the store cannot be
  /// made or the log of a missing one is there.
  explicit NewStore(StoreAccess& access);
  ~NewStore();
  NewStore(const NewStore&) = delete;
  NewStore& operator=(const NewStore&) = delete;

  store::SqlStores& Stores() { return *stores_; }
  /// Closes the store and puts it in its place. Throws CommandError when someone was faster.
  void Keep();
  const QString& Path() const { return path_; }

 private:
  QString path_;
  QString draft_;
  std::unique_ptr<store::SqlStores> stores_;
};

}  // namespace quarl::ctl
