#pragma once

#include <sys/types.h>

#include "store/sql/Connection.h"
#include "store/sql/SqlError.h"

struct sqlite3;
struct sqlite3_stmt;

namespace quarl::store::sql {

/// A connection to an SQLite file or to a database in memory. It is opened without anything being read from the
/// file, but for SQLite's own look at the first hundred bytes.
class SqliteConnection final : public Connection {
 public:
  enum class Mode { ReadWrite, ReadOnly, Immutable };
  /// @param name what messages call the store. Throws SqlError.
  SqliteConnection(const QString& path, Mode mode, QString name, int busyTimeoutMs);
  ~SqliteConnection() override;

  void Execute(const std::string& sql) override;
  qint64 Changes() override;
  std::string ChangeMark() override;
  bool IsCurrent() override;
  void Begin(Access access) override;
  void Commit() override;
  void Rollback() noexcept override;

  /// The value in the first column of a statement's first row, as a text; for pragmas.
  QString Value(const std::string& sql);
  sqlite3* Handle() const { return handle_; }
  const QString& Name() const { return name_; }
  /// Throws the error for a result code of SQLite.
  [[noreturn]] void Throw(int code);

 protected:
  std::unique_ptr<Statement> Prepare(std::string_view sql) override;

 private:
  void RememberFile();

  QString name_;
  QByteArray file_;  // empty: in memory
  int busyTimeoutMs_;
  sqlite3* handle_ = nullptr;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

/// The error for a result code of SQLite.
SqlError SqliteError(int code, const QString& detail, const QString& storeName, int busyTimeoutMs);

}  // namespace quarl::store::sql
