#include "plugins/contract/ModuleImage.h"

#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {

QByteArrayView ModuleImage::DataAt(quint64 address, quint64 length) const {
  for (const Span& span : spans) {
    const auto size = static_cast<quint64>(span.bytes.size());
    if (address < span.address || address - span.address > size) continue;
    const quint64 offset = address - span.address;
    if (length > size - offset) continue;
    return span.bytes.sliced(static_cast<qsizetype>(offset), static_cast<qsizetype>(length));
  }
  throw ModuleError(QStringLiteral("The file is damaged: a resource lies outside the part that holds resources."));
}

ModuleImage ReadModuleImage(QByteArrayView file) {
  if (file.isEmpty()) throw ModuleError(QStringLiteral("The file is empty."));
  if (file.startsWith("MZ")) return ReadPeImage(file);
  if (file.startsWith("\x7f"
                      "ELF"))
    return ReadElfImage(file);
  throw ModuleError(QStringLiteral("The file is neither a Windows library nor a Linux shared object."));
}

}  // namespace quarl::plugins
