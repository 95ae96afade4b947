#pragma once

#include <QByteArrayView>
#include <QString>

namespace quarl::plugins {

/// Little-endian numbers out of bytes that nobody has checked yet. Every access outside the bytes throws ModuleError
/// with the name of the place. The bytes must outlive the reader.
class ByteReader {
 public:
  /// @param place what the bytes are, as the end of a sentence: "its headers"
  ByteReader(QByteArrayView bytes, QString place) : bytes_(bytes), place_(std::move(place)) {}

  quint64 Size() const { return static_cast<quint64>(bytes_.size()); }
  bool Has(quint64 offset, quint64 length) const { return offset <= Size() && length <= Size() - offset; }
  quint8 U8(quint64 offset) const;
  quint16 U16(quint64 offset) const;
  quint32 U32(quint64 offset) const;
  quint64 U64(quint64 offset) const;
  QByteArrayView Slice(quint64 offset, quint64 length) const;

 private:
  QByteArrayView bytes_;
  QString place_;
};

}  // namespace quarl::plugins
