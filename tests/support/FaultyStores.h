#pragma once

#include <QHash>
#include <QString>
#include <memory>

#include "store/Stores.h"

namespace quarl::store {

/// Any stores, with faults at named operations: "GroupStore.GetGroups", "SystemConfig.AddTestType" ... as the
/// interfaces name them. The bulk read counts under "TreeReader.Groups", "TreeReader.Servers", "TreeReader.Tests",
/// "TreeReader.ServerAlerts" and "TreeReader.GroupAlerts", one call each a tree, as far as it gets; a fault there is
/// a tree that ends before this part. The stores are borrowed.
class FaultyStores : public Stores {
 public:
  explicit FaultyStores(Stores& stores);
  ~FaultyStores() override;

  /// From its n-th call on (1 = the next one) the operation throws StoreError, before anything is done.
  void ThrowFrom(const QString& operation, int call = 1, const QString& description = QStringLiteral("store fault"));
  /// From its n-th call on the operation answers false, 0 or nothing, before anything is done; queries give no rows.
  void RefuseFrom(const QString& operation, int call = 1);
  /// Every operation throws, as with a store that cannot be reached.
  void ThrowAlways(const QString& description = QStringLiteral("store fault"));
  /// Takes all faults away; the counts stay.
  void Heal();
  /// Calls of an operation so far, failed ones included.
  int Calls(const QString& operation) const;
  /// Calls of all operations so far.
  int Calls() const;

  SystemConfig& System() override;
  ServerStore& Servers() override;
  GroupStore& Groups() override;
  TestStore& Tests() override;
  AlertStore& Alerts() override;
  LogStore& Log() override;
  InstallConfig& Install() override;
  TreeReader& Tree() override;

  /// Which calls fail, and how often operations were called.
  class Faults {
   public:
    enum class Verdict { Pass, Refuse };
    /// Counts a call. Throws StoreError where that is asked for.
    Verdict Call(const char* operation);

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
  struct Parts;
  Faults faults_;
  std::unique_ptr<Parts> parts_;
};

}  // namespace quarl::store
