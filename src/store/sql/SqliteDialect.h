#pragma once

#include "store/sql/Dialect.h"

namespace quarl::store::sql {

class SqliteConnection;

/// Stores in an SQLite file (write-ahead log, foreign keys enforced) or in memory.
class SqliteDialect final : public Dialect {
 public:
  SqliteDialect(StoreLocation location, int busyTimeoutMs, bool syncEveryChange);

  QString Name() const override;
  SchemaWords Words() const override;
  void CheckPlace() const override;
  std::unique_ptr<Connection> Open(Missing missing) override;
  std::unique_ptr<Connection> OpenUnchecked() override;
  void CheckStore() const override;
  void Settle(Connection& connection) override;
  int Version(Connection& connection) override;
  void SetVersion(Connection& connection, int version) override;
  bool OutlivesConnection() const override;
  void Backup(Connection& connection, const QString& path, bool replace) override;
  void CheckBackup(const QString& path) override;
  void Restore(Connection& connection, const QString& path, const CopyChange& change) override;
  void RestoreDamaged(const QString& path, const CopyChange& change) override;

 private:
  void Create() const;
  std::unique_ptr<SqliteConnection> Connect() const;
  bool Admit(SqliteConnection& connection) const;
  void RefuseOwnFile(const QString& path) const;
  void CopyChanged(const QString& path, const QString& copy, const CopyChange& change) const;
  void PutAside() const;

  StoreLocation location_;
  int busyTimeoutMs_;
  bool syncEveryChange_;
};

}  // namespace quarl::store::sql
