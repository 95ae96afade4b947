#include "plugins/contract/ByteReader.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleImage.h"

namespace quarl::plugins {
namespace {

constexpr quint16 kSharedObject = 3;
constexpr quint32 kNoBits = 8;
constexpr quint32 kDynamicSegment = 2;
constexpr quint64 kCompressed = 0x800;
constexpr quint64 kTagFlags1 = 0x6ffffffb;
constexpr quint64 kFlagPie = 0x08000000;

/// The tables of one ELF file. Numbers that differ in width between the two classes are read by Word().
class Elf {
 public:
  Elf(QByteArrayView file, bool wide) : bytes_(file, QStringLiteral("its headers")), wide_(wide) {
    programs_ = ReadTable(wide ? 0x20 : 0x1c, wide ? 0x36 : 0x2a, wide ? 56 : 32);
    sections_ = ReadTable(wide ? 0x28 : 0x20, wide ? 0x3a : 0x2e, wide ? 64 : 40);
  }

  QString Defect() const;
  QByteArrayView Section(QByteArrayView name) const;

 private:
  struct Table {
    quint64 offset = 0;
    quint64 entry = 0;
    quint16 count = 0;
  };
  struct Extent {
    quint64 offset = 0;
    quint64 size = 0;
  };

  quint64 Word(quint64 offset) const { return wide_ ? bytes_.U64(offset) : bytes_.U32(offset); }
  Table ReadTable(quint64 offsetAt, quint64 entryAt, quint64 entry) const;
  Extent Program(quint16 index) const;
  Extent SectionExtent(quint64 header) const {
    return {Word(header + (wide_ ? 24 : 16)), Word(header + (wide_ ? 32 : 20))};
  }
  bool IsExecutable(Extent dynamic) const;

  ByteReader bytes_;
  bool wide_;
  Table programs_;
  Table sections_;
};

Elf::Table Elf::ReadTable(quint64 offsetAt, quint64 entryAt, quint64 entry) const {
  const Table table{Word(offsetAt), bytes_.U16(entryAt), bytes_.U16(entryAt + 2)};
  if (table.count == 0) return {};
  if (table.entry != entry)
    throw ModuleError(QStringLiteral("The file is damaged: its header tables have an odd form."));
  if (!bytes_.Has(table.offset, table.entry * table.count)) {
    throw ModuleError(QStringLiteral("The module is cut short: its header tables end behind the end of the file."));
  }
  return table;
}

Elf::Extent Elf::Program(quint16 index) const {
  const quint64 at = programs_.offset + index * programs_.entry;
  return {Word(at + (wide_ ? 8 : 4)), Word(at + (wide_ ? 32 : 16))};
}

/// A program that may be placed anywhere is a shared object in form and is marked in its dynamic table.
bool Elf::IsExecutable(Extent dynamic) const {
  const quint64 word = wide_ ? 8 : 4;
  for (quint64 at = 0; at + 2 * word <= dynamic.size; at += 2 * word) {
    const quint64 tag = Word(dynamic.offset + at);
    if (tag == 0) return false;
    if (tag == kTagFlags1) return (Word(dynamic.offset + at + word) & kFlagPie) != 0;
  }
  return false;
}

QString Elf::Defect() const {
  if (bytes_.U16(16) != kSharedObject) return QStringLiteral("The file is a Linux object or program, not a library.");
  bool dynamicSeen = false;
  for (quint16 i = 0; i < programs_.count; ++i) {
    const Extent extent = Program(i);
    if (!bytes_.Has(extent.offset, extent.size)) {
      return QStringLiteral("The module is cut short: its segment %1 ends behind the end of the file.").arg(i + 1);
    }
    if (bytes_.U32(programs_.offset + i * programs_.entry) != kDynamicSegment) continue;
    if (dynamicSeen) return QStringLiteral("The file is damaged: it has more than one dynamic table.");
    dynamicSeen = true;
    if (IsExecutable(extent)) return QStringLiteral("The file is a Linux program, not a library.");
  }
  if (!dynamicSeen) return QStringLiteral("The file is no library: it cannot be loaded at run time.");
  for (quint16 i = 0; i < sections_.count; ++i) {
    const quint64 header = sections_.offset + i * sections_.entry;
    const quint32 type = bytes_.U32(header + 4);
    const Extent extent = SectionExtent(header);
    if (type == 0 || type == kNoBits || bytes_.Has(extent.offset, extent.size)) continue;
    return QStringLiteral("The module is cut short: its section %1 ends behind the end of the file.").arg(i);
  }
  return {};
}

/// The bytes of the first section of a name; empty when there is none that the file holds as plain bytes.
QByteArrayView Elf::Section(QByteArrayView name) const {
  const quint16 namesIndex = bytes_.U16(wide_ ? 0x3e : 0x32);
  if (namesIndex >= sections_.count) return {};
  const Extent names = SectionExtent(sections_.offset + namesIndex * sections_.entry);
  if (!bytes_.Has(names.offset, names.size)) return {};
  const auto length = static_cast<quint64>(name.size());
  for (quint16 i = 0; i < sections_.count; ++i) {
    const quint64 header = sections_.offset + i * sections_.entry;
    const quint64 nameAt = bytes_.U32(header);
    if (nameAt >= names.size || names.size - nameAt <= length) continue;
    const QByteArrayView text = bytes_.Slice(names.offset + nameAt, length + 1);
    if (!text.startsWith(name) || text.back() != '\0') continue;
    const Extent extent = SectionExtent(header);
    const bool plain = bytes_.U32(header + 4) != kNoBits && (Word(header + 8) & kCompressed) == 0;
    return plain && bytes_.Has(extent.offset, extent.size) ? bytes_.Slice(extent.offset, extent.size)
                                                           : QByteArrayView();
  }
  return {};
}

}  // namespace

ModuleImage ReadElfImage(QByteArrayView file) {
  const ByteReader bytes(file, QStringLiteral("its headers"));
  const quint8 width = bytes.U8(4);
  const quint8 order = bytes.U8(5);
  if (order == 2) throw ModuleError(QStringLiteral("The file is for a machine with the other byte order."));
  if ((width != 1 && width != 2) || order != 1)
    throw ModuleError(QStringLiteral("The file is an ELF file of an unknown form."));
  const Elf elf(file, width == 2);
  ModuleImage image;
  image.format = width == 2 ? ModuleFormat::Elf64 : ModuleFormat::Elf32;
  image.defect = elf.Defect();
  image.resources = elf.Section(".rsrc");
  image.spans.push_back({0, image.resources});
  return image;
}

}  // namespace quarl::plugins
