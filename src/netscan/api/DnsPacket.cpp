#include "netscan/api/DnsPacket.h"

#include <QStringList>
#include <cstring>

namespace quarl::netscan {
namespace {

constexpr std::uint16_t kInternet = 1, kIsResponse = 0x8000, kClassMask = 0x7fff;  // the top bit flushes caches
constexpr std::size_t kLongestName = 255, kMostRecords = 1000;
constexpr int kMostPointers = 127;  // a name has no more labels

// Stands for a "." inside a label, so that a name can be put together again.
const QString kInnerDot = QString(QChar(0x2024));

// A name at the reader. Pointers lead strictly backwards, and there are only so many, so that it ends soon.
QString ReadName(Bytes packet, ByteReader& reader) {
  QByteArray name;
  ByteReader at = reader;
  int jumps = 0;
  std::size_t limit = reader.Position();
  for (;;) {
    const std::uint8_t length = at.Byte();
    if ((length & 0xc0) == 0xc0) {
      const std::size_t target = (length & 0x3fU) << 8 | at.Byte();
      if (jumps == 0) reader = at;
      const bool damaged = target >= limit || ++jumps > kMostPointers;
      if (damaged) reader.Skip(packet.size() + 1);  // nothing can be read after it
      if (!at.Ok() || damaged) return {};
      limit = target;
      at = ByteReader(packet, target);
      continue;
    }
    const Bytes label = at.Take(length);
    if (!at.Ok() || length > 63 || static_cast<std::size_t>(name.size()) + length > kLongestName) {
      reader.Skip(packet.size() + 1);
      return {};
    }
    if (length == 0) break;
    if (!name.isEmpty()) name += '.';
    name += QByteArray(reinterpret_cast<const char*>(label.data()), length).replace('.', kInnerDot.toUtf8());
  }
  if (jumps == 0) reader = at;
  return QString::fromUtf8(name);
}

std::optional<DnsRecord> ReadRecord(Bytes packet, ByteReader& reader) {
  DnsRecord record;
  record.owner = ReadName(packet, reader);
  const std::uint16_t type = reader.Big16();
  const bool internet = (reader.Big16() & kClassMask) == kInternet;
  reader.Skip(4);
  const std::uint16_t size = reader.Big16();
  ByteReader data = reader;
  const Bytes content = reader.Take(size);
  if (!reader.Ok() || !internet) return std::nullopt;
  record.type = DnsType(type);
  if (record.type == DnsType::A && size == sizeof record.address) {
    std::memcpy(&record.address, content.data(), size);
    return record;
  }
  if (record.type != DnsType::Ptr && record.type != DnsType::Srv) return std::nullopt;
  if (record.type == DnsType::Srv) data.Skip(6);
  record.target = ReadName(packet, data);
  return data.Ok() && data.Position() <= reader.Position() ? std::optional(record) : std::nullopt;
}

bool AddName(ByteWriter& writer, const QString& name) {
  for (const QString& label : name.split(QLatin1Char('.'))) {
    const QByteArray bytes = QString(label).replace(kInnerDot, QStringLiteral(".")).toUtf8();
    if (bytes.isEmpty() || bytes.size() > 63) return false;
    writer.Byte(static_cast<std::uint8_t>(bytes.size())).Add(bytes);
  }
  writer.Byte(0);
  return true;
}

}  // namespace

std::optional<ByteVector> DnsQuery(std::uint16_t id, const std::vector<DnsQuestion>& questions) {
  ByteWriter writer;
  writer.Big16(id).Big16(0).Big16(static_cast<std::uint32_t>(questions.size())).Zeros(6);
  for (const DnsQuestion& question : questions) {
    if (!AddName(writer, question.name)) return std::nullopt;
    writer.Big16(static_cast<std::uint16_t>(question.type)).Big16(kInternet);
  }
  return writer.Done();
}

std::vector<DnsRecord> ReadDnsResponse(Bytes packet) {
  ByteReader reader(packet);
  reader.Skip(2);
  if ((reader.Big16() & kIsResponse) == 0) return {};
  const std::size_t questions = reader.Big16();
  std::size_t count = 0;
  for (int section = 0; section < 3; ++section) count += reader.Big16();
  for (std::size_t index = 0; index < questions && reader.Ok(); ++index) {
    ReadName(packet, reader);
    reader.Skip(4);
  }
  std::vector<DnsRecord> records;
  for (std::size_t index = 0; index < count && index < kMostRecords && reader.Ok(); ++index)
    if (auto record = ReadRecord(packet, reader)) records.push_back(std::move(*record));
  return records;
}

}  // namespace quarl::netscan
