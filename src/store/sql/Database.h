#pragma once

#include <array>
#include <memory>

#include "store/sql/Connection.h"
#include "store/sql/Dialect.h"
#include "store/sql/SqlError.h"

namespace quarl::store::sql {

/// The one database behind the store objects: opens it when an operation needs it, and anew after it failed.
class Database {
 public:
  explicit Database(const SqlSetup& setup);

  /// Runs an operation of one query, or of none: body(Connection&).
  template <typename Body>
  auto Read(Body&& body) {
    return Guard([&] { return body(Use()); });
  }
  /// Runs an operation whose queries have to see the same state.
  template <typename Body>
  auto ReadAtOnce(Body&& body) {
    return Guard([&] {
      Connection& connection = Use();
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
      Connection& connection = Use();
      Transaction transaction(connection, Connection::Access::Write);
      auto result = body(connection);
      if (result) transaction.Commit();
      return result;
    });
  }

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
      if (error.LosesConnection() && dialect_->OutlivesConnection()) Close();
      throw;
    }
  }
  Connection& Use();
  void Open();

  std::unique_ptr<Dialect> dialect_;
  std::unique_ptr<Connection> connection_;
  std::array<std::string, 3> stateWords_;
  SqlStatistics closed_;  // of connections that are no more
  bool wasOpen_ = false;
  quint64 openings_ = 0;
};

}  // namespace quarl::store::sql
