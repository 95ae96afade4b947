#include "plugins/contract/ByteReader.h"

#include <QtEndian>

#include "plugins/contract/ModuleError.h"

namespace quarl::plugins {

QByteArrayView ByteReader::Slice(quint64 offset, quint64 length) const {
  if (!Has(offset, length))
    throw ModuleError(QStringLiteral("The file is damaged or cut short inside %1.").arg(place_));
  return bytes_.sliced(static_cast<qsizetype>(offset), static_cast<qsizetype>(length));
}

quint8 ByteReader::U8(quint64 offset) const {
  return static_cast<quint8>(Slice(offset, 1).front());
}

quint16 ByteReader::U16(quint64 offset) const {
  return qFromLittleEndian<quint16>(Slice(offset, sizeof(quint16)).data());
}

quint32 ByteReader::U32(quint64 offset) const {
  return qFromLittleEndian<quint32>(Slice(offset, sizeof(quint32)).data());
}

quint64 ByteReader::U64(quint64 offset) const {
  return qFromLittleEndian<quint64>(Slice(offset, sizeof(quint64)).data());
}

}  // namespace quarl::plugins
