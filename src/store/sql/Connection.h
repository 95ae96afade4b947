#pragma once

#include <QString>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "store/sql/SqlStores.h"

namespace quarl::store::sql {

/// A prepared statement. Parameters count from 1, written $1, $2 ... in the SQL in the order of their first use;
/// columns count from 0. Every function but Reset() throws SqlError.
class Statement {
 public:
  virtual ~Statement() = default;
  virtual void BindNull(int parameter) = 0;
  virtual void BindInteger(int parameter, qint64 value) = 0;
  virtual void BindText(int parameter, std::string_view utf8) = 0;
  /// Runs to the next row; false at the end.
  virtual bool Step() = 0;
  virtual bool IsNull(int column) = 0;
  /// A value of another type than the asked one is damage of the store.
  virtual qint64 Integer(int column) = 0;
  /// UTF-8, valid until the next Step() or Reset().
  virtual std::string_view Text(int column) = 0;
  /// Ends the run and clears the parameters.
  virtual void Reset() noexcept = 0;
};

/// A connection to a database. It keeps its statements prepared. One thread at a time.
class Connection {
 public:
  virtual ~Connection() = default;
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// The statement of this SQL, prepared when it is first asked for. In use by one Query at a time.
  Statement& Prepared(std::string_view sql);
  /// Runs SQL that has neither parameters nor rows; several statements may follow each other.
  virtual void Execute(const std::string& sql) = 0;
  /// Rows that the last INSERT, UPDATE or DELETE changed itself.
  virtual qint64 Changes() = 0;
  /// A text that is another one once the database has changed, through this connection or another.
  virtual std::string ChangeMark() = 0;
  /// The store behind the connection is still the one that was opened; false: replaced. Throws when it is gone.
  virtual bool IsCurrent() = 0;

  enum class Access { Read, Write };
  virtual void Begin(Access access) = 0;
  virtual void Commit() = 0;
  virtual void Rollback() noexcept = 0;

  SqlStatistics& Counters() { return counters_; }

 protected:
  virtual std::unique_ptr<Statement> Prepare(std::string_view sql) = 0;
  /// For destructors of implementations, whose statements must go first.
  void DropStatements() { statements_.clear(); }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<std::string, std::unique_ptr<Statement>, Hash, std::equal_to<>> statements_;
  SqlStatistics counters_;
};

/// One run of a statement, ended when this object goes. The arguments are the parameters in their order.
class Query {
 public:
  template <typename... Arguments>
  explicit Query(Connection& connection, std::string_view sql, const Arguments&... arguments)
      : statement_(connection.Prepared(sql)) {
    try {
      (Bind(arguments), ...);
    } catch (...) {
      statement_.Reset();
      throw;
    }
    ++connection.Counters().statementsExecuted;
  }
  ~Query() { statement_.Reset(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  bool Next() { return statement_.Step(); }
  bool IsNull(int column) { return statement_.IsNull(column); }
  qint64 Integer(int column) { return statement_.Integer(column); }
  std::string_view Utf8(int column) { return statement_.Text(column); }
  QString Text(int column);
  /// A number that does not fit is damage of the store.
  qint32 Int32(int column);
  qint16 Int16(int column);

 private:
  void Bind(std::nullopt_t) { statement_.BindNull(++bound_); }
  void Bind(qint64 value) { statement_.BindInteger(++bound_, value); }
  void Bind(qint32 value) { statement_.BindInteger(++bound_, value); }
  void Bind(qint16 value) { statement_.BindInteger(++bound_, value); }
  void Bind(bool value) { statement_.BindInteger(++bound_, value ? 1 : 0); }
  void Bind(std::string_view utf8) { statement_.BindText(++bound_, utf8); }
  void Bind(const char* utf8) { statement_.BindText(++bound_, utf8); }
  void Bind(const QString& text);
  template <typename T>
  void Bind(const std::optional<T>& value) {
    if (value) {
      Bind(*value);
    } else {
      Bind(std::nullopt);
    }
  }

  Statement& statement_;
  int bound_ = 0;
};

/// Runs a statement without rows; the number of rows that it changed.
template <typename... Arguments>
qint64 Change(Connection& connection, std::string_view sql, const Arguments&... arguments) {
  Query query(connection, sql, arguments...);
  while (query.Next()) {
  }
  return connection.Changes();
}

/// True when the query gives a row.
template <typename... Arguments>
bool Exists(Connection& connection, std::string_view sql, const Arguments&... arguments) {
  return Query(connection, sql, arguments...).Next();
}

/// A transaction, rolled back when it goes without Commit().
class Transaction {
 public:
  Transaction(Connection& connection, Connection::Access access);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Connection& connection_;
  bool open_ = true;
};

/// Throws the error for a stored value that no store of ours can hold.
[[noreturn]] void ThrowDamaged(const QString& what);

}  // namespace quarl::store::sql
