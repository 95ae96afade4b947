#pragma once

#include <QByteArray>
#include <QString>

#include "plugins/contract/ModuleBitmap.h"
#include "plugins/contract/ModuleImage.h"

namespace quarl::plugins {

inline constexpr qint64 kLargestModule = qint64{128} * 1024 * 1024;  ///< bytes

/// A plug-in module's file, read into memory and never loaded as a library. Whatever the file holds, reading it ends
/// in a value or a ModuleError, with work bounded by the file's size.
class ModuleFile {
 public:
  /// Reads a file by its native path. Throws ModuleError when it cannot be read whole, is larger than kLargestModule
  /// or is neither a PE nor an ELF file.
  static ModuleFile Open(const QString& path);
  /// The same for bytes already at hand.
  static ModuleFile FromBytes(QByteArray bytes);

  ModuleFormat Format() const { return image_.format; }
  /// "" for a whole shared library, else a sentence that says why it is none.
  const QString& Defect() const { return image_.defect; }
  /// The version resource (the one with id 1), empty when there is none. Throws ModuleError for a damaged tree.
  /// The view lives as long as this object.
  QByteArrayView VersionBlock() const;
  /// The picture, the bitmap named "ICON". Throws ModuleError when there is none or it cannot be used.
  ModuleBitmap Icon() const;

 private:
  explicit ModuleFile(QByteArray bytes);

  QByteArray bytes_;
  ModuleImage image_;
};

/// "" for a whole, readable module with a picture, else one sentence that says what is wrong with it. Never throws.
QString InspectModule(const QString& path);
/// The same for the bytes of a module. They are not copied.
QString InspectModuleBytes(QByteArrayView bytes);

}  // namespace quarl::plugins
