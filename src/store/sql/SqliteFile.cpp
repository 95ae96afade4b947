#include "store/sql/SqliteFile.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <array>
#include <cerrno>
#include <cstring>

#include "store/sql/Schema.h"
#include "store/sql/SqliteConnection.h"
#include "store/sql/WholeFile.h"

namespace quarl::store::sql {
namespace {

constexpr int kHeaderSize = 100;
constexpr int kPageSizeAt = 16;
constexpr int kPageCountAt = 28;
constexpr int kUserVersionAt = 60;
constexpr int kApplicationIdAt = 68;

using Header = std::array<unsigned char, kHeaderSize>;

quint32 Number(const Header& header, int at) {
  return qFromBigEndian<quint32>(header.data() + at);
}

qint64 SizeOf(const QString& path) {
  struct stat status {};
  return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_size : 0;
}

void CheckHeader(const Header& header, qint64 size, const QString& path, const QString& name) {
  if (size < kHeaderSize || std::memcmp(header.data(), "SQLite format 3", 16) != 0) {
    throw SqlError(Fault::Damaged, QStringLiteral("The file %1 is not a store of this program.").arg(name));
  }
  if (Number(header, kApplicationIdAt) != static_cast<quint32>(kApplicationId)) {
    throw SqlError(Fault::Foreign, QStringLiteral("The file %1 is a database of another program.").arg(name));
  }
  const quint32 version = Number(header, kUserVersionAt);
  if (version > static_cast<quint32>(kSchemaVersion)) {
    throw SqlError(Fault::Foreign,
                   QStringLiteral("The store %1 is of version %2, this program knows versions up to %3.")
                       .arg(name)
                       .arg(version)
                       .arg(kSchemaVersion));
  }
  const auto stored = qFromBigEndian<quint16>(header.data() + kPageSizeAt);
  const qint64 pageSize = stored == 1 ? 65536 : stored;
  if (!HasWaitingLog(path) && size < pageSize * Number(header, kPageCountAt)) {
    throw SqlError(Fault::Damaged, QStringLiteral("The store %1 is damaged: the file is cut short.").arg(name));
  }
}

}  // namespace

FileState StateOf(const QString& path, const QString& subject) {
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
    if (errno == ENOENT) return FileState::Missing;
    throw SqlError(Fault::Unreachable, QStringLiteral("%1 cannot be opened: %2.").arg(subject, SystemText(errno)));
  }
  if (S_ISDIR(status.st_mode)) {
    throw SqlError(Fault::Unreachable, QStringLiteral("%1 cannot be opened: it is a folder.").arg(subject));
  }
  if (!S_ISREG(status.st_mode)) {
    throw SqlError(Fault::Unreachable, QStringLiteral("%1 cannot be opened: it is no file.").arg(subject));
  }
  return FileState::Present;
}

bool IsEmptyOrOurs(SqliteConnection& connection, const QString& path) {
  sqlite3_file* file = nullptr;
  int code = sqlite3_file_control(connection.Handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (code != SQLITE_OK) connection.Throw(code);
  const qint64 size = SizeOf(path);  // SQLite would tell 0 for a file of one byte
  if (size == 0) return true;
  Header header{};
  code = file->pMethods->xRead(file, header.data(), kHeaderSize, 0);
  if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) connection.Throw(code);
  CheckHeader(header, size, path, connection.Name());
  return false;
}

void CheckContent(SqliteConnection& connection, const char* check) {
  const QString verdict = connection.Value(std::string("PRAGMA ") + check + "(1)");
  if (verdict != QLatin1String("ok")) {
    throw SqlError(Fault::Damaged,
                   QStringLiteral("The store %1 is damaged: %2.").arg(connection.Name(), verdict.simplified()));
  }
  const int version = connection.Value("PRAGMA user_version").toInt();
  if (version < 1 || version > kSchemaVersion) {
    throw SqlError(Fault::Foreign,
                   QStringLiteral("The store %1 is of version %2, this program knows versions up to %3.")
                       .arg(connection.Name())
                       .arg(version)
                       .arg(kSchemaVersion));
  }
}

QString RealFile(const QString& path) {
  constexpr int kMostLinks = 40;  // as the kernel follows
  QString file = path;
  for (int links = 0; links < kMostLinks; ++links) {
    const QString target = QFileInfo(file).symLinkTarget();
    if (target.isEmpty()) break;
    file = target;
  }
  return file;
}

bool HasCompanion(const QString& path) {
  const QString file = RealFile(path);
  return QFile::exists(file + QStringLiteral("-wal")) || QFile::exists(file + QStringLiteral("-journal"));
}

bool HasUnfinishedLog(const QString& path) {
  return HasWaitingLog(path) || SizeOf(RealFile(path) + QStringLiteral("-journal")) > 0;
}

bool HasWaitingLog(const QString& path) {
  return SizeOf(RealFile(path) + QStringLiteral("-wal")) > 0;
}

}  // namespace quarl::store::sql
