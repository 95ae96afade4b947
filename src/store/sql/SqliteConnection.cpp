#include "store/sql/SqliteConnection.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <cerrno>

#include "store/sql/WholeFile.h"

namespace quarl::store::sql {
namespace {

class SqliteStatement final : public Statement {
 public:
  SqliteStatement(SqliteConnection& connection, sqlite3_stmt* handle) : connection_(connection), handle_(handle) {}
  ~SqliteStatement() override { sqlite3_finalize(handle_); }

  void BindNull(int parameter) override { Check(sqlite3_bind_null(handle_, parameter)); }
  void BindInteger(int parameter, qint64 value) override { Check(sqlite3_bind_int64(handle_, parameter, value)); }
  void BindText(int parameter, std::string_view utf8) override {
    const char* text = utf8.data() ? utf8.data() : "";  // a null pointer would bind NULL
    Check(sqlite3_bind_text64(handle_, parameter, text, utf8.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
  }

  bool Step() override {
    const int code = sqlite3_step(handle_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) connection_.Throw(code);
    return false;
  }

  bool IsNull(int column) override { return sqlite3_column_type(handle_, column) == SQLITE_NULL; }
  qint64 Integer(int column) override {
    if (sqlite3_column_type(handle_, column) != SQLITE_INTEGER) ThrowDamaged(QStringLiteral("a number is missing"));
    return sqlite3_column_int64(handle_, column);
  }
  std::string_view Text(int column) override {
    if (sqlite3_column_type(handle_, column) != SQLITE_TEXT) ThrowDamaged(QStringLiteral("a text is missing"));
    const void* text = sqlite3_column_text(handle_, column);
    if (!text) connection_.Throw(SQLITE_NOMEM);
    return {static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
  }

  void Reset() noexcept override {
    sqlite3_reset(handle_);
    sqlite3_clear_bindings(handle_);
  }

 private:
  void Check(int code) {
    if (code != SQLITE_OK) connection_.Throw(code);
  }

  SqliteConnection& connection_;
  sqlite3_stmt* handle_;
};

QByteArray UriOf(const QByteArray& file) {
  const QString path = QFileInfo(QFile::decodeName(file)).absoluteFilePath();
  return "file://" + QUrl::toPercentEncoding(path, "/") + "?immutable=1";
}

QString SystemReason(sqlite3* handle) {
  const int number = sqlite3_system_errno(handle);
  return number == 0 ? QString::fromUtf8(sqlite3_errmsg(handle)) : SystemText(number);
}

}  // namespace

SqlError SqliteError(int code, const QString& detail, const QString& storeName, int busyTimeoutMs) {
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return {Fault::Busy, QStringLiteral("The store %1 is in use by another program and was not free within %2 s.")
                               .arg(storeName)
                               .arg(busyTimeoutMs / 1000.0)};
    case SQLITE_CORRUPT:
      return {Fault::Damaged, QStringLiteral("The store %1 is damaged: %2.").arg(storeName, detail)};
    case SQLITE_NOTADB:
      return {Fault::Damaged, QStringLiteral("The file %1 is not a store of this program.").arg(storeName)};
    case SQLITE_READONLY:
      return {Fault::Unreachable, QStringLiteral("The store %1 is read-only.").arg(storeName)};
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return {Fault::Unreachable, QStringLiteral("The store %1 cannot be opened: %2.").arg(storeName, detail)};
    case SQLITE_IOERR:
      return {Fault::Unreachable, QStringLiteral("The store %1 cannot be read or written: %2.").arg(storeName, detail)};
    case SQLITE_FULL:
      return {Fault::Other, QStringLiteral("There is no room left for the store %1.").arg(storeName)};
    case SQLITE_TOOBIG:
      return {Fault::Other, QStringLiteral("A text is too long for the store %1.").arg(storeName)};
    default:
      return {Fault::Other, QStringLiteral("The store %1 reports an error: %2.").arg(storeName, detail)};
  }
}

SqliteConnection::SqliteConnection(const QString& path, Mode mode, QString name, int busyTimeoutMs)
    : name_(std::move(name)), busyTimeoutMs_(busyTimeoutMs) {
  if (path != QLatin1String(":memory:")) file_ = QFile::encodeName(path);
  const QByteArray target = file_.isEmpty() ? QByteArray(":memory:") : (mode == Mode::Immutable ? UriOf(file_) : file_);
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_PRIVATECACHE;
  flags |= mode == Mode::ReadWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
  if (mode == Mode::Immutable) flags |= SQLITE_OPEN_URI;
  const int code = sqlite3_open_v2(target.constData(), &handle_, flags, nullptr);
  if (code != SQLITE_OK) {
    const SqlError error = SqliteError(code, SystemReason(handle_), name_, busyTimeoutMs_);
    sqlite3_close_v2(handle_);
    throw error;
  }
  sqlite3_busy_timeout(handle_, busyTimeoutMs_);
  RememberFile();
}

SqliteConnection::~SqliteConnection() {
  DropStatements();
  sqlite3_close_v2(handle_);
}

void SqliteConnection::RememberFile() {
  struct stat status {};
  if (file_.isEmpty() || ::stat(file_.constData(), &status) != 0) return;
  device_ = status.st_dev;
  inode_ = status.st_ino;
}

bool SqliteConnection::IsCurrent() {
  if (file_.isEmpty()) return true;
  struct stat status {};
  const int number = ::stat(file_.constData(), &status) == 0 ? 0 : errno;
  if (number == 0 && status.st_dev == device_ && status.st_ino == inode_) return true;
  // What waits in the log goes into the file that we hold: the log bears the name of the other file now.
  sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  if (number == 0) return false;
  throw SqlError(Fault::Unreachable,
                 QStringLiteral("The store %1 cannot be found any more: %2.").arg(name_, SystemText(number)));
}

void SqliteConnection::Throw(int code) {
  const bool fromSystem = (code & 0xff) == SQLITE_CANTOPEN || (code & 0xff) == SQLITE_IOERR;
  throw SqliteError(code, fromSystem ? SystemReason(handle_) : QString::fromUtf8(sqlite3_errmsg(handle_)), name_,
                    busyTimeoutMs_);
}

void SqliteConnection::Execute(const std::string& sql) {
  const int code = sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Throw(code);
}

std::string SqliteConnection::ChangeMark() {
  return Value("PRAGMA data_version").toStdString() + '/' + std::to_string(sqlite3_total_changes64(handle_));
}

qint64 SqliteConnection::Changes() {
  return sqlite3_changes64(handle_);
}

void SqliteConnection::Begin(Access access) {
  // The write lock is taken at once: a later change-over from reading could fail because another program wrote.
  Execute(access == Access::Write ? "BEGIN IMMEDIATE" : "BEGIN");
}

void SqliteConnection::Commit() {
  Execute("COMMIT");
}

void SqliteConnection::Rollback() noexcept {
  if (!sqlite3_get_autocommit(handle_)) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

std::unique_ptr<Statement> SqliteConnection::Prepare(std::string_view sql) {
  sqlite3_stmt* handle = nullptr;
  const int code = sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                      &handle, nullptr);
  if (code != SQLITE_OK) Throw(code);
  return std::make_unique<SqliteStatement>(*this, handle);
}

QString SqliteConnection::Value(const std::string& sql) {
  sqlite3_stmt* handle = nullptr;
  int code = sqlite3_prepare_v3(handle_, sql.c_str(), -1, 0, &handle, nullptr);
  if (code != SQLITE_OK) Throw(code);
  code = sqlite3_step(handle);
  const auto* text = code == SQLITE_ROW ? static_cast<const char*>(sqlite3_column_blob(handle, 0)) : nullptr;
  QString value = QString::fromUtf8(text, text ? sqlite3_column_bytes(handle, 0) : 0);
  if (sqlite3_finalize(handle) != SQLITE_OK) Throw(code);
  return value;
}

}  // namespace quarl::store::sql
