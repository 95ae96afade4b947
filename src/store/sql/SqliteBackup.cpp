#include <sqlite3.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <memory>
#include <tuple>

#include "store/sql/ConfigurationReader.h"
#include "store/sql/Schema.h"
#include "store/sql/SqliteConnection.h"
#include "store/sql/SqliteDialect.h"
#include "store/sql/SqliteFile.h"
#include "store/sql/WholeFile.h"

namespace quarl::store::sql {
namespace {

using Mode = SqliteConnection::Mode;

/// Copies all pages at once: the source as it is at one moment, in one transaction of the destination.
void CopyPages(SqliteConnection& from, SqliteConnection& to) {
  sqlite3_backup* backup = sqlite3_backup_init(to.Handle(), "main", from.Handle(), "main");
  if (!backup) to.Throw(sqlite3_errcode(to.Handle()));
  int code = SQLITE_OK;
  do {
    code = sqlite3_backup_step(backup, -1);
  } while (code == SQLITE_OK);
  const int end = sqlite3_backup_finish(backup);
  if (code != SQLITE_DONE) to.Throw(code);
  if (end != SQLITE_OK) to.Throw(end);
}

std::unique_ptr<SqliteConnection> OpenForReading(const QString& path, int busyTimeoutMs) {
  if (StateOf(path, QStringLiteral("The file %1").arg(path)) == FileState::Missing) {
    throw SqlError(Fault::Unreachable, QStringLiteral("The backup %1 cannot be found.").arg(path));
  }
  // A file that no program writes is read without any lock or helper file, in a folder that may be read-only.
  const Mode mode = HasWaitingLog(path) ? Mode::ReadOnly : Mode::Immutable;
  return std::make_unique<SqliteConnection>(path, mode, path, busyTimeoutMs);
}

/// Throws unless the backup has every table and index of a new store. A file can be whole and yet hold others.
void CheckDefinitions(SqliteConnection& backup, SqliteConnection& fresh) {
  Query wanted(fresh, "SELECT type, name, sql FROM sqlite_schema WHERE sql IS NOT NULL");
  while (wanted.Next()) {
    if (Exists(backup, "SELECT 1 FROM sqlite_schema WHERE type = $1 AND name = $2 AND sql = $3", wanted.Utf8(0),
               wanted.Utf8(1), wanted.Utf8(2))) {
      continue;
    }
    throw SqlError(Fault::Foreign, QStringLiteral("The file %1 is no store: its %2 %3 is missing or another one.")
                                       .arg(backup.Name(), wanted.Text(0), wanted.Text(1)));
  }
}

}  // namespace

void SqliteDialect::RefuseOwnFile(const QString& path) const {
  if (QFileInfo(path).canonicalFilePath() != QFileInfo(location_.path).canonicalFilePath()) return;
  if (location_.IsMemory() || !QFileInfo::exists(path)) return;
  throw SqlError(Fault::Other, QStringLiteral("The file %1 is the store itself.").arg(path));
}

void SqliteDialect::Backup(Connection& connection, const QString& path, bool replace) {
  RefuseOwnFile(path);
  if (StateOf(path, QStringLiteral("The file %1").arg(path)) == FileState::Present && !replace) {
    throw SqlError(Fault::Other, QStringLiteral("The file %1 exists already.").arg(path));
  }
  if (HasCompanion(path)) {
    throw SqlError(Fault::Other, QStringLiteral("The file %1 belongs to a database that is in use.").arg(path));
  }
  WholeFile file(path, QStringLiteral("The backup %1 cannot be written").arg(path));
  {
    SqliteConnection copy(file.Path(), Mode::ReadWrite, path, busyTimeoutMs_);
    CopyPages(static_cast<SqliteConnection&>(connection), copy);
    std::ignore = copy.Value("PRAGMA journal_mode=DELETE");  // one file, without companions
    CheckContent(copy, "integrity_check");
  }
  if (!file.Publish(replace ? WholeFile::Existing::Replace : WholeFile::Existing::Keep)) {
    throw SqlError(Fault::Other, QStringLiteral("The file %1 exists already.").arg(path));
  }
}

void SqliteDialect::CheckBackup(const QString& path) {
  RefuseOwnFile(path);
  const auto source = OpenForReading(path, busyTimeoutMs_);
  if (IsEmptyOrOurs(*source, path)) {
    throw SqlError(Fault::Damaged, QStringLiteral("The file %1 is empty.").arg(path));
  }
  CheckContent(*source, "integrity_check");
  SqliteDialect inMemory(StoreLocation::InMemory(), busyTimeoutMs_, syncEveryChange_);
  SqliteConnection fresh(StoreLocation::InMemory().path, Mode::ReadWrite, inMemory.Name(), busyTimeoutMs_);
  Migrate(fresh, inMemory, Version(*source));
  CheckDefinitions(*source, fresh);
  try {
    std::ignore = ReadConfiguration(*source);
  } catch (const StoreError& error) {
    throw SqlError(Fault::Damaged, QStringLiteral("The backup %1 cannot be used. %2").arg(path, error.Description()));
  }
}

void SqliteDialect::CopyChanged(const QString& path, const QString& copy, const CopyChange& change) const {
  const auto source = OpenForReading(path, busyTimeoutMs_);
  SqliteConnection changed(copy, Mode::ReadWrite, Name(), busyTimeoutMs_);
  CopyPages(*source, changed);
  change(changed);
  std::ignore = changed.Value("PRAGMA journal_mode=WAL");
  CheckContent(changed, "integrity_check");
}

void SqliteDialect::Restore(Connection& connection, const QString& path, const CopyChange& change) {
  const WholeFile file(RealFile(location_.path), QStringLiteral("The store %1 cannot be written").arg(Name()));
  CopyChanged(path, file.Path(), change);
  SqliteConnection changed(file.Path(), Mode::ReadWrite, Name(), busyTimeoutMs_);
  CopyPages(changed, static_cast<SqliteConnection&>(connection));
}

void SqliteDialect::RestoreDamaged(const QString& path, const CopyChange& change) {
  WholeFile file(RealFile(location_.path), QStringLiteral("The store %1 cannot be written").arg(Name()));
  CopyChanged(path, file.Path(), change);
  PutAside();
  std::ignore = file.Publish(WholeFile::Existing::Replace);
}

/// Gives the damaged store another name besides its own, which the new one then takes over, and its logs another name.
void SqliteDialect::PutAside() const {
  const QString file = RealFile(location_.path);
  const QString aside = file + QDateTime::currentDateTime().toString(QStringLiteral("'.damaged-'yyyyMMdd-HHmmss-zzz"));
  const auto fail = [this](int number) {
    throw SqlError(Fault::Unreachable,
                   QStringLiteral("The damaged store %1 cannot be put aside: %2.").arg(Name(), SystemText(number)));
  };
  if (const int number = AddName(file, aside); number != 0) fail(number);
  // Left beside the new store, the logs would be taken for its own.
  for (const auto& companion : {QStringLiteral("-journal"), QStringLiteral("-wal")}) {
    if (!QFile::exists(file + companion)) continue;
    if (const int number = MoveToFreeName(file + companion, aside + companion); number != 0) fail(number);
  }
  QFile::remove(file + QStringLiteral("-shm"));
}

}  // namespace quarl::store::sql
