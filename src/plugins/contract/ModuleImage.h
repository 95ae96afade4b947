#pragma once

#include <QByteArrayView>
#include <QString>
#include <vector>

namespace quarl::plugins {

/// The form of an executable file: PE of 32 and 64 bits, ELF of 32 and 64 bits (little-endian).
enum class ModuleFormat { Pe32, Pe32Plus, Elf32, Elf64 };

/// What the headers of an executable file say about it and where its resources are. Views into the file's bytes,
/// which must outlive it.
struct ModuleImage {
  /// A stretch of the file and the address by which resource entries name its first byte.
  struct Span {
    quint64 address = 0;
    QByteArrayView bytes;
  };

  ModuleFormat format = ModuleFormat::Elf64;
  /// "" for a whole shared library, else a sentence that says why the file is none.
  QString defect;
  /// From the root directory of the resource tree to the end of its section; empty when the file has no resources.
  QByteArrayView resources;
  std::vector<Span> spans;

  /// The bytes at an address. Throws ModuleError when they do not lie inside one span.
  QByteArrayView DataAt(quint64 address, quint64 length) const;
};

/// Reads the headers. Throws ModuleError for a file of another kind and for headers that the file does not hold whole.
ModuleImage ReadModuleImage(QByteArrayView file);

ModuleImage ReadPeImage(QByteArrayView file);
ModuleImage ReadElfImage(QByteArrayView file);

}  // namespace quarl::plugins
