#include "plugins/contract/ByteReader.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleImage.h"

namespace quarl::plugins {
namespace {

constexpr quint32 kSignature = 0x00004550;  // "PE", two NULs
constexpr quint16 kMagic32 = 0x10b;
constexpr quint16 kMagic64 = 0x20b;
constexpr quint16 kIsLibrary = 0x2000;
constexpr quint32 kResourceDirectory = 2;
constexpr quint16 kMostSections = 96;  // the most that the system's own loader takes
constexpr quint64 kSectionHeader = 40;
constexpr quint64 kCoffHeader = 24;  // with the signature before it

/// Address of the resource tree, 0 when the image has none.
quint32 ResourceAddress(const ByteReader& optional, bool wide) {
  const quint64 countAt = wide ? 108 : 92;
  const quint64 entry = countAt + 4 + kResourceDirectory * 8ULL;
  if (optional.U32(countAt) <= kResourceDirectory || !optional.Has(entry, 8)) return 0;
  return optional.U32(entry);
}

void ReadSections(const ByteReader& headers, quint64 table, quint16 count, ModuleImage& image) {
  for (quint16 i = 0; i < count; ++i) {
    const quint64 at = table + i * kSectionHeader;
    const quint32 size = headers.U32(at + 16);
    const quint32 offset = headers.U32(at + 20);
    if (size == 0) continue;
    if (!headers.Has(offset, size)) {
      image.defect = QStringLiteral("The module is cut short: its section %1 ends at byte %2, the file at byte %3.")
                         .arg(i + 1)
                         .arg(quint64{offset} + size)
                         .arg(headers.Size());
      continue;
    }
    image.spans.push_back({headers.U32(at + 12), headers.Slice(offset, size)});
  }
}

void FindResources(quint32 address, ModuleImage& image) {
  if (address == 0) return;
  for (const ModuleImage::Span& span : image.spans) {
    if (address < span.address || address - span.address >= static_cast<quint64>(span.bytes.size())) continue;
    image.resources = span.bytes.sliced(static_cast<qsizetype>(address - span.address));
    return;
  }
  if (image.defect.isEmpty()) {
    image.defect = QStringLiteral("The module is damaged: its resources lie outside its sections.");
  }
}

}  // namespace

ModuleImage ReadPeImage(QByteArrayView file) {
  const ByteReader headers(file, QStringLiteral("its headers"));
  const quint64 start = headers.U32(0x3c);
  if (!headers.Has(start, 4) || headers.U32(start) != kSignature) {
    throw ModuleError(
        QStringLiteral("The file is no Windows library: it has no PE header, or is cut short before it."));
  }
  const quint16 sections = headers.U16(start + 6);
  const quint16 optionalSize = headers.U16(start + 20);
  const quint16 characteristics = headers.U16(start + 22);
  const ByteReader optional(headers.Slice(start + kCoffHeader, optionalSize), QStringLiteral("its optional header"));
  const quint16 magic = optional.U16(0);
  if (magic != kMagic32 && magic != kMagic64) {
    throw ModuleError(QStringLiteral("The file is a PE image of an unknown form."));
  }
  if (sections > kMostSections) throw ModuleError(QStringLiteral("The file is damaged: it names too many sections."));
  const bool wide = magic == kMagic64;

  ModuleImage image;
  image.format = wide ? ModuleFormat::Pe32Plus : ModuleFormat::Pe32;
  if (!headers.Has(0, optional.U32(60))) image.defect = QStringLiteral("The module is cut short inside its headers.");
  ReadSections(headers, start + kCoffHeader + optionalSize, sections, image);
  if ((characteristics & kIsLibrary) == 0)
    image.defect = QStringLiteral("The file is a Windows program, not a library.");
  FindResources(ResourceAddress(optional, wide), image);
  return image;
}

}  // namespace quarl::plugins
