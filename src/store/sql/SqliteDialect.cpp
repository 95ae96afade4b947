#include "store/sql/SqliteDialect.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <tuple>

#include "store/sql/Schema.h"
#include "store/sql/SqliteConnection.h"
#include "store/sql/SqliteFile.h"
#include "store/sql/WholeFile.h"

namespace quarl::store::sql {
namespace {

constexpr const char* kCacheSize = "PRAGMA cache_size=-65536";
// The results of many tests touch the same pages again and again; each is then copied back once for many writes. The
// log of writes stays below 32 MB.
constexpr const char* kCheckpointPages = "PRAGMA wal_autocheckpoint=8000";

SqliteConnection& Own(Connection& connection) {
  return static_cast<SqliteConnection&>(connection);
}

void SetCheckpointOnClose(SqliteConnection& connection, bool on) {
  sqlite3_db_config(connection.Handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, on ? 0 : 1, nullptr);
}

/// Makes a folder and the missing ones above it, for this user only.
void MakeFolder(const QString& folder, const QString& name) {
  if (QFileInfo(folder).isDir()) return;
  const QString above = QFileInfo(folder).path();
  if (above != folder) MakeFolder(above, name);
  if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) != 0 && errno != EEXIST) {
    throw SqlError(Fault::Unreachable, QStringLiteral("The store %1 cannot be made: %2.").arg(name, SystemText(errno)));
  }
}

}  // namespace

SqliteDialect::SqliteDialect(StoreLocation location, int busyTimeoutMs, bool syncEveryChange)
    : location_(std::move(location)), busyTimeoutMs_(busyTimeoutMs), syncEveryChange_(syncEveryChange) {}

QString SqliteDialect::Name() const {
  return location_.IsMemory() ? QStringLiteral("in memory") : location_.path;
}

bool SqliteDialect::OutlivesConnection() const {
  return !location_.IsMemory();
}

SchemaWords SqliteDialect::Words() const {
  return {.text = "TEXT",
          .opaque = "TEXT",
          .number64 = "INTEGER",
          .rowId = "INTEGER NOT NULL PRIMARY KEY",
          .tableEnd = " STRICT",
          .countChange =
              "CREATE TRIGGER count_%event%_%table% AFTER %event% ON %table% BEGIN"
              " UPDATE store_properties SET revision = revision + 1; END"};
}

void SqliteDialect::CheckPlace() const {
  if (HasUnfinishedLog(location_.path) &&
      StateOf(location_.path, QStringLiteral("The store %1").arg(Name())) == FileState::Missing) {
    throw SqlError(Fault::Unreachable,
                   QStringLiteral("The store %1 is missing, but a log of it (-wal or -journal) is there. Put the store"
                                  " back, or move the log away to begin with a new store.")
                       .arg(Name()));
  }
}

void SqliteDialect::Create() const {
  CheckPlace();
  const QString place = RealFile(location_.path);
  if (location_.createFolder) MakeFolder(QFileInfo(place).path(), Name());
  WholeFile file(place, QStringLiteral("The store %1 cannot be made").arg(Name()));
  {
    SqliteDialect beside({file.Path(), false}, busyTimeoutMs_, syncEveryChange_);
    const std::unique_ptr<Connection> connection = beside.Open(Missing::Fail);
    Migrate(*connection, beside);
    beside.Settle(*connection);
  }
  std::ignore = file.Publish(WholeFile::Existing::Keep);  // another program's is as good
}

std::unique_ptr<Connection> SqliteDialect::Open(Missing missing) {
  const QString& path = location_.path;
  if (!location_.IsMemory() && StateOf(path, QStringLiteral("The store %1").arg(Name())) == FileState::Missing) {
    if (missing == Missing::Fail) {
      throw SqlError(Fault::Unreachable, QStringLiteral("The store %1 cannot be found.").arg(Name()));
    }
    Create();
  }
  auto connection = Connect();
  if (Admit(*connection)) {
    connection->Execute(kCacheSize);  // what follows the check finds the pages in the cache
    CheckContent(*connection, "quick_check");
  }
  return connection;
}

std::unique_ptr<SqliteConnection> SqliteDialect::Connect() const {
  auto connection =
      std::make_unique<SqliteConnection>(location_.path, SqliteConnection::Mode::ReadWrite, Name(), busyTimeoutMs_);
  connection->Execute("PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON");
  return connection;
}

/// True for a file with the beginning of a store; closing the connection leaves waiting changes where they are then.
/// False when there is nothing to be checked. Throws SqlError for every other file.
bool SqliteDialect::Admit(SqliteConnection& connection) const {
  if (location_.IsMemory()) return false;
  const bool empty = IsEmptyOrOurs(connection, location_.path);
  if (sqlite3_db_readonly(connection.Handle(), "main") != 0) connection.Throw(SQLITE_READONLY);
  if (empty) return false;
  // Closing a connection may move waiting changes into the file; that must not happen to one that we turn down.
  SetCheckpointOnClose(connection, !HasWaitingLog(location_.path));
  return true;
}

std::unique_ptr<Connection> SqliteDialect::OpenUnchecked() {
  const QString& path = location_.path;
  if (location_.IsMemory() || StateOf(path, QStringLiteral("The store %1").arg(Name())) == FileState::Missing)
    return {};
  auto connection = Connect();
  if (!Admit(*connection) || Version(*connection) != kSchemaVersion) return {};
  connection->Execute(kCacheSize);
  return connection;
}

void SqliteDialect::CheckStore() const {
  const auto connection = Connect();
  if (Admit(*connection)) CheckContent(*connection, "quick_check");
}

void SqliteDialect::Settle(Connection& connection) {
  SqliteConnection& own = Own(connection);
  SetCheckpointOnClose(own, true);
  try {
    std::ignore = own.Value("PRAGMA journal_mode=WAL");
  } catch (const SqlError& error) {
    if (error.What() != Fault::Busy) throw;  // someone uses a store just made; the next to open it changes over
  }
  own.Execute(syncEveryChange_ ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
  own.Execute(kCacheSize);
  std::ignore = own.Value(kCheckpointPages);
  own.Execute("PRAGMA foreign_keys=ON; PRAGMA temp_store=MEMORY");
}

int SqliteDialect::Version(Connection& connection) {
  return Own(connection).Value("PRAGMA user_version").toInt();
}

void SqliteDialect::SetVersion(Connection& connection, int version) {
  connection.Execute("PRAGMA application_id=" + std::to_string(kApplicationId) +
                     "; PRAGMA user_version=" + std::to_string(version));
}

std::unique_ptr<Dialect> MakeDialect(const SqlSetup& setup) {
  return std::make_unique<SqliteDialect>(setup.location, setup.busyTimeoutMs, setup.syncEveryChange);
}

}  // namespace quarl::store::sql
