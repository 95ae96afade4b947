#pragma once

#include <QHash>
#include <QString>
#include <memory>
#include <numeric>

#include "store/Stores.h"

namespace quarl::store {

/// Any stores, with faults at named operations: "GroupStore.GetGroups", "SystemConfig.AddTestType" ... as the
/// interfaces name them; "Stores.BeginChange" and "Change.Commit" are operations that can throw. The bulk read counts
/// under "TreeReader.Groups", "TreeReader.Servers", "TreeReader.Tests", "TreeReader.ServerAlerts" and
/// "TreeReader.GroupAlerts", one call each a tree, as far as it gets; a fault there is a tree that ends before this
/// part. The stores are borrowed.
class FaultyStores : public Stores {
 public:
  explicit FaultyStores(Stores& stores);

  /// From its n-th call on (1 = the next one) the operation throws StoreError, before anything is done.
  void ThrowFrom(const QString& operation, int call = 1, const QString& description = QStringLiteral("store fault"));
  /// From its n-th call on the operation answers false, 0 or nothing, before anything is done; queries give no rows.
  void RefuseFrom(const QString& operation, int call = 1);
  /// Every operation throws, as with a store that cannot be reached.
  void ThrowAlways(const QString& description = QStringLiteral("store fault")) { faults_.always_ = description; }
  /// Takes all faults away; the counts stay.
  void Heal();
  /// Calls of an operation so far, failed ones included.
  int Calls(const QString& operation) const { return faults_.calls_.value(operation); }
  /// Calls of all operations so far.
  int Calls() const { return std::accumulate(faults_.calls_.cbegin(), faults_.calls_.cend(), 0); }

  SystemConfig& System() override { return *system_; }
  ServerStore& Servers() override { return *servers_; }
  GroupStore& Groups() override { return *groups_; }
  TestStore& Tests() override { return *tests_; }
  AlertStore& Alerts() override { return *alerts_; }
  LogStore& Log() override { return *log_; }
  InstallConfig& Install() override { return *install_; }
  TreeReader& Tree() override { return *tree_; }
  std::unique_ptr<Change> BeginChange() override;

  /// Which calls fail, and how often operations were called.
  class Faults {
   public:
    enum class Verdict { Pass, Refuse };
    /// Counts a call. Throws StoreError where that is asked for.
    Verdict Call(const QByteArray& operation);

   private:
    friend class FaultyStores;
    struct Fault {
      int from = 1;
      bool refuse = false;
      QString description;
    };
    QHash<QString, int> calls_;
    QHash<QString, Fault> faults_;
    QString always_;
  };

 private:
  Stores& stores_;
  Faults faults_;
  const std::unique_ptr<SystemConfig> system_;
  const std::unique_ptr<ServerStore> servers_;
  const std::unique_ptr<GroupStore> groups_;
  const std::unique_ptr<TestStore> tests_;
  const std::unique_ptr<AlertStore> alerts_;
  const std::unique_ptr<LogStore> log_;
  const std::unique_ptr<InstallConfig> install_;
  const std::unique_ptr<TreeReader> tree_;
};

}  // namespace quarl::store
