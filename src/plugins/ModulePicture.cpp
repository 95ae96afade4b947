#include "plugins/ModulePicture.h"

#include <QImage>
#include <QtEndian>

#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::plugins {
namespace {

constexpr qsizetype kFileHeader = 14;

/// The bitmap as the file that it would be on its own.
QByteArray BitmapFile(const ModuleBitmap& bitmap) {
  QByteArray file(kFileHeader, '\0');
  file[0] = 'B';
  file[1] = 'M';
  qToLittleEndian(static_cast<quint32>(kFileHeader + bitmap.bytes.size()), file.data() + 2);
  qToLittleEndian(static_cast<quint32>(kFileHeader + bitmap.pixelOffset), file.data() + 10);
  return file.append(bitmap.bytes.data(), bitmap.bytes.size());
}

}  // namespace

QPixmap LoadModulePicture(const QString& path) {
  try {
    const ModuleFile module = ModuleFile::Open(path);
    if (!module.Defect().isEmpty()) return {};
    return QPixmap::fromImage(QImage::fromData(BitmapFile(module.Icon()), "BMP"));
  } catch (const ModuleError&) {
    return {};
  }
}

}  // namespace quarl::plugins
