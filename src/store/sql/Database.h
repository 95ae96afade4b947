#pragma once

#include <array>
#include <future>
#include <memory>

#include "store/sql/Connection.h"
#include "store/sql/Dialect.h"
#include "store/sql/SqlError.h"

namespace quarl::store::sql {

/// The one database behind the store objects: opens it when an operation needs it, and anew after it failed. A store
/// opened ahead is read before its content has been checked; a change waits for the check, and once that has found
/// something, every operation throws it.
class Database {
 public:
  explicit Database(const SqlSetup& setup);

  /// Runs an operation of one query, or of none: body(Connection&).
  template <typename Body>
  auto Read(Body&& body) {
    return Guard([&] { return body(Use(Connection::Access::Read)); });
  }
  /// Runs an operation whose queries have to see the same state.
  template <typename Body>
  auto ReadAtOnce(Body&& body) {
    return Guard([&] {
      Connection& connection = Use(Connection::Access::Read);
      if (change_ != ChangeState::None) return body(connection);
      Transaction transaction(connection, Connection::Access::Read);
      auto result = body(connection);
      transaction.Commit();
      return result;
    });
  }
  /// Runs an operation that changes something. A result of false or 0 is a refusal: nothing is written then.
  template <typename Body>
  auto Write(Body&& body) {
    return Guard([&] {
      Connection& connection = Use(Connection::Access::Write);
      if (change_ != ChangeState::None) return InChange(connection, body);
      Transaction transaction(connection, Connection::Access::Write);
      auto result = body(connection);
      if (result) transaction.Commit();
      return result;
    });
  }

  /// Opens the store for reading, its content unchecked where that is possible. Throws SqlError.
  void OpenAhead();
  /// Checks what was opened ahead on a thread of its own; false: done, or there is nothing to check. Throws SqlError.
  bool CheckAside();
  /// One transaction around the operations from now on, until EndChange().
  void BeginChange();
  void CommitChange();
  void EndChange() noexcept;

  /// The word of a test state; nothing for a number that is none.
  const std::string* StateWord(qint64 state) const;
  Dialect& GetDialect() { return *dialect_; }
  SqlStatistics Statistics() const;
  /// How often the store was opened.
  quint64 Openings() const { return openings_; }
  /// The store is opened anew by the next operation.
  void Close();

 private:
  template <typename Body>
  auto Guard(Body&& body) {
    try {
      return body();
    } catch (const SqlError& error) {
      if (change_ == ChangeState::Open) change_ = ChangeState::Broken;
      if (error.LosesConnection() && dialect_->OutlivesConnection()) Close();
      throw;
    } catch (...) {
      if (change_ == ChangeState::Open) change_ = ChangeState::Broken;
      throw;
    }
  }
  /// A writing operation as a part of the open change.
  template <typename Body>
  auto InChange(Connection& connection, Body& body) {
    connection.Execute("SAVEPOINT operation");
    auto result = body(connection);
    if (!result) connection.Execute("ROLLBACK TO operation");
    connection.Execute("RELEASE operation");
    return result;
  }
  Connection& Use(Connection::Access access);
  void Open();
  void Keep(std::unique_ptr<Connection> connection, bool checked);
  bool HasVerdict() const;
  void EndCheck();

  std::unique_ptr<Dialect> dialect_;
  std::unique_ptr<Connection> connection_;
  bool checked_ = false;       // the connection's store has been
  std::future<void> verdict_;  // of the check on a thread of its own, while that is awaited
  std::array<std::string, 3> stateWords_;
  enum class ChangeState { None, Open, Broken };
  ChangeState change_ = ChangeState::None;
  SqlStatistics closed_;  // of connections that are no more
  bool wasOpen_ = false;
  quint64 openings_ = 0;
};

}  // namespace quarl::store::sql
