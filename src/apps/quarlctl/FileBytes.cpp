#include "apps/quarlctl/FileBytes.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "apps/quarlctl/CommandError.h"

namespace quarl::ctl {
namespace {

QString Reason() {
  return store::sql::SystemText(errno);
}

[[noreturn]] void FailToWrite(const QString& path, const QString& reason) {
  throw CommandError(QStringLiteral("%1 cannot be written: %2.").arg(path, reason));
}

/// @param name what errors call the file.
void WriteOver(const QString& path, const QString& name, const QByteArray& bytes) {
  const int descriptor = open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) FailToWrite(name, Reason());
  QString fault = WriteAll(descriptor, bytes);
  if (close(descriptor) != 0 && fault.isEmpty()) fault = Reason();
  if (!fault.isEmpty()) FailToWrite(name, fault);
}

}  // namespace

QString WriteAll(int descriptor, const QByteArray& bytes) {
  qsizetype done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Reason();
    done += count;
  }
  return {};
}

void WriteWholeFile(const QString& path, const QByteArray& bytes, Existing existing) {
  const QFileInfo info(path);
  if (info.isDir()) throw CommandError(QStringLiteral("%1 is a folder.").arg(path));
  if (info.exists() && !info.isFile()) {
    WriteOver(path, path, bytes);
    return;
  }
  if (info.exists() && existing == Existing::Keep) {
    throw CommandError(QStringLiteral("%1 exists already; --force replaces it.").arg(path));
  }
  store::sql::WholeFile file(info.exists() ? info.canonicalFilePath() : path,
                             QStringLiteral("%1 cannot be written").arg(path));
  WriteOver(file.Path(), path, bytes);
  if (!file.Publish(existing)) throw CommandError(QStringLiteral("%1 exists already.").arg(path));
}

QByteArray ReadAtMost(QFile& file, const QString& name, qint64 limit) {
  constexpr qsizetype kStep = 1 << 20;
  QByteArray bytes;
  for (;;) {
    const qsizetype had = bytes.size();
    bytes.resize(had + kStep);
    const qint64 count = file.read(bytes.data() + had, kStep);
    if (count < 0) throw CommandError(QStringLiteral("%1 cannot be read: %2.").arg(name, file.errorString()));
    bytes.resize(had + count);
    if (bytes.size() > limit) {
      throw CommandError(QStringLiteral("%1 is larger than %2 MiB.").arg(name).arg(limit / 1048576));
    }
    if (count == 0) return bytes;
  }
}

QByteArray ReadWholeFile(const QString& path, qint64 limit) {
  if (QFileInfo(path).isDir()) throw CommandError(QStringLiteral("%1 is a folder.").arg(path));
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    throw CommandError(QStringLiteral("%1 cannot be read: %2.").arg(path, file.errorString()));
  }
  return ReadAtMost(file, path, limit);
}

}  // namespace quarl::ctl
