#pragma once

#include <functional>
#include <memory>

#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// Words of the data definition that differ between databases.
struct SchemaWords {
  std::string text;      ///< a text column, compared by the bytes of its UTF-8
  std::string opaque;    ///< a text column that keeps NUL characters
  std::string number64;  ///< a column of 64-bit numbers
  std::string rowId;     ///< a primary key that numbers its rows itself, rising
  std::string tableEnd;  ///< what follows the columns
  /// A trigger that counts a change in store_properties.revision; %table% and %event% (INSERT ...) stand in it.
  std::string countChange;
};

/// All that differs between databases. One object a store; it keeps no connection.
class Dialect {
 public:
  virtual ~Dialect() = default;

  /// The store as its user knows it, for messages.
  virtual QString Name() const = 0;
  virtual SchemaWords Words() const = 0;
  /// Throws SqlError where a new store must not be made: the log of a missing one is there, whose changes would go
  /// into the new one.
  virtual void CheckPlace() const = 0;
  enum class Missing { Create, Fail };
  /// Opens a store after checking that it is one, whole and not newer than this program, and changes nothing of one
  /// that is not. A new one is empty. Throws SqlError.
  virtual std::unique_ptr<Connection> Open(Missing missing) = 0;
  /// The same for a store of this version without looking at its content, for reading until Settle(); closed without
  /// that, the store stays as it is. None where a store has to be opened in full.
  virtual std::unique_ptr<Connection> OpenUnchecked() { return nullptr; }
  /// Checks the content of the store through a connection of its own, whatever thread asks. Throws SqlError.
  virtual void CheckStore() const {}
  /// Brings a connection to a checked store of this version into its working mode.
  virtual void Settle(Connection& connection) = 0;
  /// Version of the schema; 0 for an empty store. SetVersion() is part of the running transaction.
  virtual int Version(Connection& connection) = 0;
  virtual void SetVersion(Connection& connection, int version) = 0;
  /// False: closing the connection ends the store.
  virtual bool OutlivesConnection() const = 0;

  /// Writes a checked copy of the store, whole or not at all. Throws SqlError.
  virtual void Backup(Connection& connection, const QString& path, bool replace) = 0;
  /// Throws SqlError for a file that is no whole backup of a store, or whose configuration cannot be read.
  virtual void CheckBackup(const QString& path) = 0;
  using CopyChange = std::function<void(Connection&)>;
  /// Gives the store the content of a checked backup, as it is after a change of a copy, in one transaction. Throws
  /// SqlError.
  virtual void Restore(Connection& connection, const QString& path, const CopyChange& change) = 0;
  /// The same for a damaged store, whose file is put aside under another name beside it: at every moment there is a
  /// file under the store's name.
  virtual void RestoreDamaged(const QString& path, const CopyChange& change) = 0;
};

/// The dialect for the store of a setup.
std::unique_ptr<Dialect> MakeDialect(const SqlSetup& setup);

}  // namespace quarl::store::sql
