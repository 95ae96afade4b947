#pragma once

#include <functional>
#include <memory>

#include "base/InstallPaths.h"
#include "store/Configuration.h"
#include "store/ModuleInspector.h"
#include "store/ServiceStore.h"
#include "store/StoreLocation.h"
#include "store/Stores.h"

namespace quarl {
class Clock;
namespace control {
class ServiceControl;
}
}  // namespace quarl

namespace quarl::store {

/// What a store needs from its user. Pointers are borrowed and must outlive the store.
struct SqlSetup {
  StoreLocation location;
  InstallPaths paths;
  ModuleInspector inspector;                   ///< none: no module is accepted
  control::ServiceControl* service = nullptr;  ///< none: no service is installed
  const Clock* clock = nullptr;                ///< none: the machine's clock
  int busyTimeoutMs = 5000;                    ///< how long an operation waits for another writer
  /// Every change is on the disk when its operation returns, whatever happens to the machine. Without it a power
  /// failure may take the last ones back; the end of the program alone never does.
  bool syncEveryChange = true;
  /// How long CheckGroup, CheckServer and CheckTest wait for the results.
  int checkWaitMs = 10'000;
  /// Lets so many milliseconds pass within such a wait; none: the thread sleeps. The store must not be used in it.
  std::function<void(int)> pause = {};
};

/// What a store asked of its database since it was made. BEGIN, COMMIT and ROLLBACK are no statements here, nor is
/// what opening the store takes.
struct SqlStatistics {
  quint64 statementsExecuted = 0;
  quint64 statementsPrepared = 0;
  quint64 transactions = 0;
};

/// The store over SQL. Making one touches no file: the store is opened within the first operation, made when it is
/// missing, and opened anew after it failed. Until that succeeds every operation throws StoreError. A store that was
/// open and then vanished is not made again; one that was replaced is opened anew.
class SqlStores : public Stores {
 public:
  explicit SqlStores(SqlSetup setup);
  ~SqlStores() override;

  SystemConfig& System() override;
  ServerStore& Servers() override;
  GroupStore& Groups() override;
  TestStore& Tests() override;
  AlertStore& Alerts() override;
  LogStore& Log() override;
  InstallConfig& Install() override;
  TreeReader& Tree() override;
  std::unique_ptr<Change> BeginChange() override;
  ConfigurationStore& Configurations();
  /// What the monitoring service needs beyond the above, and what others may know of it.
  ServiceStore& Service();

  /// Opens the store now, making it when it is missing. Throws StoreError.
  void Open();
  /// Opens the store and reads the tree for the next ReadTree(), which gives that if nothing has changed by then.
  /// Throws StoreError when the store cannot be opened. The content is not checked by that: operations may read it as
  /// it is, until CheckAside() or the first change, which waits for a check, has found it whole. Once damage has been
  /// found every operation throws it, and the file stays as it is.
  void ReadAhead();
  /// Checks on a thread of its own what ReadAhead() opened; to be called until it gives false. True: the check has not
  /// come to its end. Throws StoreError for what it has found.
  [[nodiscard]] bool CheckAside();
  /// Throws StoreError where no new store may be put, under whatever name it was made: the log of a missing one is
  /// there, whose changes would go into the new one.
  static void CheckPlace(const SqlSetup& setup);
  enum class Existing { Keep, Replace };
  /// Copies the store to a file, checked and written whole or not at all, while it may be in use. Throws StoreError,
  /// also for a file that exists and is to be kept.
  void Backup(const QString& path, Existing existing = Existing::Keep);
  /// Gives the store of a setup the content of a backup, under the store's own locks: other users see the old or the
  /// new content. The backup is checked first; a damaged store is put aside under a name with ".damaged-" in it.
  /// Throws StoreError with the old store in its place.
  static void Restore(const SqlSetup& setup, const QString& backup);

  SqlStatistics Statistics() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace quarl::store
