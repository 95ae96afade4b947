#include "plugins/contract/ModuleBitmap.h"

#include <QtAlgorithms>
#include <cstdlib>

#include "plugins/contract/ByteReader.h"
#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {
namespace {

constexpr quint32 kCoreHeader = 12;
constexpr quint32 kInfoHeader = 40;
constexpr quint32 kVersion4Header = 108;
constexpr quint32 kVersion5Header = 124;

enum Compression : quint32 { Plain = 0, RunLength8 = 1, RunLength4 = 2, Masks = 3 };

struct Header {
  quint32 size = 0;
  qint64 width = 0;
  qint64 height = 0;  // negative: the top row comes first
  quint16 planes = 0;
  quint16 bits = 0;
  quint32 compression = Plain;
  quint32 colours = 0;
};

[[noreturn]] void Refuse(const QString& fault) {
  throw ModuleError(QStringLiteral("The module's picture cannot be used: %1.").arg(fault));
}

Header ReadHeader(const ByteReader& bytes) {
  Header header;
  header.size = bytes.U32(0);
  if (header.size == kCoreHeader) {
    header.width = bytes.U16(4);
    header.height = bytes.U16(6);
    header.planes = bytes.U16(8);
    header.bits = bytes.U16(10);
    return header;
  }
  if (header.size != kInfoHeader && header.size != kVersion4Header && header.size != kVersion5Header) {
    Refuse(QStringLiteral("its header has an unknown size of %1 bytes").arg(header.size));
  }
  header.width = static_cast<qint32>(bytes.U32(4));
  header.height = static_cast<qint32>(bytes.U32(8));
  header.planes = bytes.U16(12);
  header.bits = bytes.U16(14);
  header.compression = bytes.U32(16);
  header.colours = bytes.U32(32);
  bytes.Slice(0, header.size);
  return header;
}

bool KnownForm(const Header& header) {
  switch (header.compression) {
    case Plain:
      return header.bits == 1 || header.bits == 4 || header.bits == 8 || header.bits == 16 || header.bits == 24 ||
             header.bits == 32;
    case RunLength8:
      return header.bits == 8 && header.height > 0;
    case RunLength4:
      return header.bits == 4 && header.height > 0;
    case Masks:
      return header.bits == 16 || header.bits == 32;
    default:
      return false;
  }
}

/// One unbroken run of at most 8 bits.
bool IsChannel(quint32 mask, quint16 bits) {
  if (mask == 0 || (bits == 16 && mask > 0xffff)) return false;
  const quint32 run = mask >> qCountTrailingZeroBits(mask);
  return run <= 0xff && (run & (run + 1)) == 0;
}

void CheckMasks(const ByteReader& bytes, const Header& header) {
  const quint32 red = bytes.U32(40);
  const quint32 green = bytes.U32(44);
  const quint32 blue = bytes.U32(48);
  const quint32 alpha = header.size >= kVersion4Header ? bytes.U32(52) : 0;
  const bool apart = (red & green) == 0 && ((red | green) & blue) == 0 && ((red | green | blue) & alpha) == 0;
  const bool channels = IsChannel(red, header.bits) && IsChannel(green, header.bits) && IsChannel(blue, header.bits);
  if (!apart || !channels || (alpha != 0 && !IsChannel(alpha, header.bits))) {
    Refuse(QStringLiteral("its channel masks make no colours"));
  }
}

quint64 PaletteBytes(const Header& header) {
  const quint64 entry = header.size == kCoreHeader ? 3 : 4;
  if (header.bits > 8) return header.colours * entry;
  const quint32 most = 1U << header.bits;
  if (header.colours > most) Refuse(QStringLiteral("its palette has more colours than its pixels can name"));
  return (header.colours == 0 ? most : header.colours) * entry;
}

}  // namespace

ModuleBitmap ModuleBitmap::Check(QByteArrayView bytes) {
  const ByteReader reader(bytes, QStringLiteral("its picture"));
  const Header header = ReadHeader(reader);
  const qint64 height = std::abs(header.height);
  if (header.width < 1 || header.width > kLargestIconSide || height < 1 || height > kLargestIconSide) {
    Refuse(QStringLiteral("it has %1 by %2 pixels, sides of 1 to %3 are taken")
               .arg(header.width)
               .arg(height)
               .arg(kLargestIconSide));
  }
  if (header.planes != 1 || !KnownForm(header)) {
    Refuse(QStringLiteral("its pixels are stored in an unknown way (%1 bits, method %2)")
               .arg(header.bits)
               .arg(header.compression));
  }
  if (header.compression == Masks) CheckMasks(reader, header);
  const quint64 masks = header.compression == Masks && header.size == kInfoHeader ? 12 : 0;
  const quint64 pixels = header.size + masks + PaletteBytes(header);
  const bool runs = header.compression == RunLength4 || header.compression == RunLength8;
  const quint64 row = (static_cast<quint64>(header.width) * header.bits + 31) / 32 * 4;
  if (!reader.Has(pixels, runs ? 2 : row * static_cast<quint64>(height))) {
    Refuse(QStringLiteral("it is cut short"));
  }
  return {static_cast<int>(header.width), static_cast<int>(height), header.bits, static_cast<qsizetype>(pixels), bytes};
}

}  // namespace quarl::plugins
