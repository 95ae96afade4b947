#include "plugins/contract/ModuleFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

#include "base/Descriptor.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ResourceTree.h"

namespace quarl::plugins {
namespace {

[[noreturn]] void ThrowUnreadable(int error) {
  throw ModuleError(QStringLiteral("The file cannot be read: %1.").arg(qt_error_string(error)));
}

/// Opened without waiting, so that a pipe of that name cannot stop the caller.
class OpenedFile {
 public:
  explicit OpenedFile(const QString& path)
      : file_(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (!file_) ThrowUnreadable(errno);
  }

  qint64 RegularSize() const {
    struct stat status = {};
    if (::fstat(file_.Get(), &status) != 0) ThrowUnreadable(errno);
    if (S_ISDIR(status.st_mode)) throw ModuleError(QStringLiteral("The name stands for a folder, not for a file."));
    if (!S_ISREG(status.st_mode)) throw ModuleError(QStringLiteral("The name stands for no ordinary file."));
    return status.st_size;
  }

  /// Up to the buffer's size; less only at the end of the file.
  qint64 Read(char* buffer, qint64 size) const {
    qint64 done = 0;
    while (done < size) {
      const ssize_t got = ::read(file_.Get(), buffer + done, static_cast<size_t>(size - done));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) ThrowUnreadable(errno);
      if (got == 0) break;
      done += got;
    }
    return done;
  }

 private:
  Descriptor file_;
};

QByteArray ReadWhole(const QString& path) {
  if (path.isEmpty() || path.contains(QChar(u'\0'))) throw ModuleError(QStringLiteral("The name is no file name."));
  const OpenedFile file(path);
  const qint64 size = file.RegularSize();
  if (size > kLargestModule) {
    throw ModuleError(
        QStringLiteral("The file is larger than the %1 MiB that a module may have.").arg(kLargestModule / 1024 / 1024));
  }
  QByteArray bytes(size + 1, Qt::Uninitialized);
  if (file.Read(bytes.data(), size + 1) != size) {
    throw ModuleError(QStringLiteral("The file changed while it was read."));
  }
  bytes.chop(1);
  return bytes;
}

QByteArrayView IconBytes(const ModuleImage& image) {
  const auto icon = ResourceTree(image).Find(kBitmapResource, u"ICON");
  if (!icon) throw ModuleError(QStringLiteral("The module has no picture (a bitmap resource named \"ICON\")."));
  return *icon;
}

}  // namespace

ModuleFile::ModuleFile(QByteArray bytes) : bytes_(std::move(bytes)), image_(ReadModuleImage(bytes_)) {}

ModuleFile ModuleFile::Open(const QString& path) {
  return ModuleFile(ReadWhole(path));
}

ModuleFile ModuleFile::FromBytes(QByteArray bytes) {
  return ModuleFile(std::move(bytes));
}

QByteArrayView ModuleFile::VersionBlock() const {
  return ResourceTree(image_).Find(kVersionResource, 1U).value_or(QByteArrayView());
}

ModuleBitmap ModuleFile::Icon() const {
  return ModuleBitmap::Check(IconBytes(image_));
}

QString InspectModuleBytes(QByteArrayView bytes) {
  try {
    const ModuleImage image = ReadModuleImage(bytes);
    if (!image.defect.isEmpty()) return image.defect;
    ModuleBitmap::Check(IconBytes(image));
    return {};
  } catch (const ModuleError& error) {
    return error.Description();
  }
}

QString InspectModule(const QString& path) {
  try {
    return InspectModuleBytes(ReadWhole(path));
  } catch (const ModuleError& error) {
    return error.Description();
  }
}

}  // namespace quarl::plugins
