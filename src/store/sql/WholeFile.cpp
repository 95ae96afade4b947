#include "store/sql/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "store/sql/SqlError.h"

namespace quarl::store::sql {
namespace {

bool SyncFile(const QByteArray& file) {
  const int descriptor = ::open(file.constData(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool done = ::fsync(descriptor) == 0;
  const int number = errno;
  ::close(descriptor);
  errno = number;
  return done;
}

bool RenameToFreeName(const QByteArray& from, const QByteArray& to) {
  if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) return true;
  // Some file systems know no such rename, but links.
  if (errno != EINVAL && errno != ENOSYS) return false;
  return ::link(from.constData(), to.constData()) == 0 && ::unlink(from.constData()) == 0;
}

}  // namespace

QString SystemText(int number) {
  return QString::fromLocal8Bit(std::strerror(number));
}

void SyncFolder(const QString& folder) {
  SyncFile(QFile::encodeName(folder));
}

int MoveToFreeName(const QString& from, const QString& to) {
  if (!RenameToFreeName(QFile::encodeName(from), QFile::encodeName(to))) return errno;
  SyncFolder(QFileInfo(to).path());
  return 0;
}

int AddName(const QString& file, const QString& name) {
  if (::link(QFile::encodeName(file).constData(), QFile::encodeName(name).constData()) == 0) return 0;
  if (errno != EPERM && errno != ENOTSUP) return errno;
  return QFile::copy(file, name) && SyncFile(QFile::encodeName(name)) ? 0 : EIO;
}

WholeFile::WholeFile(const QString& place, QString what) : place_(place), what_(std::move(what)) {
  const QFileInfo info(place);
  path_ = info.path() + QStringLiteral("/.quarl-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
  const int descriptor =
      ::open(QFile::encodeName(path_).constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0) Throw(errno);
  ::fchmod(descriptor, S_IRUSR | S_IWUSR);
  ::close(descriptor);
}

WholeFile::~WholeFile() {
  if (path_.isEmpty()) return;
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    ::unlink((QFile::encodeName(path_) + suffix).constData());
  }
}

bool WholeFile::Publish(Existing existing) {
  const QByteArray from = QFile::encodeName(path_);
  if (!SyncFile(from)) Throw(errno);
  if (existing == Existing::Keep) {
    const int fault = MoveToFreeName(path_, place_);
    if (fault == EEXIST) return false;
    if (fault != 0) Throw(fault);
  } else {
    if (std::rename(from.constData(), QFile::encodeName(place_).constData()) != 0) Throw(errno);
    SyncFolder(QFileInfo(place_).path());
  }
  path_.clear();
  return true;
}

void WholeFile::Throw(int number) const {
  throw SqlError(Fault::Unreachable, QStringLiteral("%1: %2.").arg(what_, SystemText(number)));
}

}  // namespace quarl::store::sql
