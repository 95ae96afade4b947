#include "netscan/api/NetBiosPacket.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <string_view>

#include "netscan/api/ServerList.h"

namespace quarl::netscan {
namespace {

constexpr std::size_t kNameSize = 15;
constexpr std::uint16_t kNodeStatusType = 0x21, kInternet = 1;
constexpr std::uint16_t kIsResponse = 0x8000, kIsBroadcast = 0x0010, kIsGroup = 0x8000;
constexpr std::uint8_t kDirectGroup = 0x11, kBroadcastDatagram = 0x12;
constexpr std::uint8_t kHostAnnouncement = 0x01, kRequestAnnouncement = 0x02, kMasterAnnouncement = 0x0f;
constexpr std::string_view kBrowseSlot = "\\MAILSLOT\\BROWSE";
constexpr std::string_view kSmb = "\xffSMB";
constexpr std::uint8_t kTransaction = 0x25;
constexpr std::size_t kSmbHeader = 32, kTransactionWords = 17;

// Machines pad with blanks, some end with a NUL.
QString NameOf(Bytes field) {
  const auto end = std::find(field.begin(), field.end(), std::uint8_t{0});
  return QString::fromLatin1(reinterpret_cast<const char*>(field.data()), end - field.begin()).trimmed();
}

// The name of a record is written out or points to the question.
void SkipRecordName(ByteReader& reader) {
  for (;;) {
    const std::uint8_t length = reader.Byte();
    if (length == 0) return;  // also at the end of the bytes
    if ((length & 0xc0) == 0xc0) return reader.Skip(1);
    reader.Skip(length);
  }
}

void TakeName(NodeStatus& status, const QString& name, std::uint8_t suffix, bool group) {
  if (suffix == 0x00 && !group && status.name.isEmpty()) status.name = name;
  if (suffix == 0x00 && group && status.workgroup.isEmpty()) status.workgroup = name;
  if (suffix == 0x20 && !group) status.type |= kServesFiles;
  if (suffix == 0x1b && !group) status.type |= kDomainController;
  if (suffix == 0x1c && group) status.type |= kBackupController;
}

// The data of a mailslot message to the browsers.
std::optional<Bytes> BrowseData(Bytes smb) {
  ByteReader reader(smb);
  const Bytes mark = reader.Take(kSmb.size());
  if (!std::equal(mark.begin(), mark.end(), kSmb.begin(), kSmb.end(),
                  [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); }))
    return std::nullopt;
  if (reader.Byte() != kTransaction) return std::nullopt;
  reader.Skip(kSmbHeader - kSmb.size() - 1);
  if (reader.Byte() != kTransactionWords) return std::nullopt;
  reader.Skip(22);
  const std::uint16_t size = reader.Little16(), offset = reader.Little16();
  reader.Skip(8 + 2);  // set-up words, count of the bytes
  const Bytes slot = reader.Take(kBrowseSlot.size());
  if (!std::equal(slot.begin(), slot.end(), kBrowseSlot.begin(), kBrowseSlot.end())) return std::nullopt;
  ByteReader data(smb, offset);
  const Bytes content = data.Take(size);
  return data.Ok() ? std::optional(content) : std::nullopt;
}

}  // namespace

ByteVector EncodeNetBiosName(const QByteArray& name, std::uint8_t suffix, char pad) {
  const QByteArray padded = name.leftJustified(kNameSize, pad, true) + static_cast<char>(suffix);
  ByteWriter writer;
  writer.Byte(0x20);
  for (const char c : padded) {
    const auto byte = static_cast<std::uint8_t>(c);
    writer.Byte(static_cast<std::uint8_t>('A' + (byte >> 4))).Byte(static_cast<std::uint8_t>('A' + (byte & 0xf)));
  }
  return writer.Byte(0).Done();
}

ByteVector NodeStatusRequest(std::uint16_t id, bool broadcast) {
  ByteWriter writer;
  writer.Big16(id).Big16(broadcast ? kIsBroadcast : 0).Big16(1).Zeros(6);
  writer.Add(EncodeNetBiosName("*", 0, '\0')).Big16(kNodeStatusType).Big16(kInternet);
  return writer.Done();
}

std::optional<NodeStatus> ReadNodeStatus(Bytes packet, std::uint16_t id) {
  ByteReader reader(packet);
  if (reader.Big16() != id || (reader.Big16() & kIsResponse) == 0) return std::nullopt;
  const std::uint16_t questions = reader.Big16(), answers = reader.Big16();
  if (questions != 0 || answers == 0) return std::nullopt;
  reader.Skip(4);
  SkipRecordName(reader);
  if (reader.Big16() != kNodeStatusType || reader.Big16() != kInternet) return std::nullopt;
  reader.Skip(4 + 2);  // time to live, length
  const std::size_t count = reader.Byte();
  NodeStatus status;
  for (std::size_t index = 0; index < count; ++index) {
    const QString name = NameOf(reader.Take(kNameSize));
    const std::uint8_t suffix = reader.Byte();
    const bool group = (reader.Big16() & kIsGroup) != 0;
    if (!reader.Ok()) return std::nullopt;
    TakeName(status, name, suffix, group);
  }
  if (!reader.Ok() || status.name.isEmpty()) return std::nullopt;
  return status;
}

ByteVector AnnouncementRequest(std::uint16_t id, std::uint32_t ownAddress, const QByteArray& ownName,
                               const QByteArray& workgroup) {
  ByteWriter data;
  data.Byte(kRequestAnnouncement).Byte(0).Add(ownName.left(kNameSize)).Byte(0);
  const std::size_t size = data.Size();
  ByteWriter smb;
  smb.Add(kSmb).Byte(kTransaction).Zeros(kSmbHeader - kSmb.size() - 1).Byte(kTransactionWords);
  const std::size_t dataOffset = kSmbHeader + 1 + 2 * kTransactionWords + 2 + kBrowseSlot.size() + 1;
  const auto dataSize = static_cast<std::uint32_t>(size);
  smb.Little16(0).Little16(dataSize).Zeros(10).Zeros(4 + 2);  // totals, maxima, flags, time-out
  smb.Little16(0).Little16(0).Little16(dataSize).Little16(static_cast<std::uint32_t>(dataOffset));
  smb.Byte(3).Byte(0).Little16(1).Little16(1).Little16(2);  // write to a mailslot of the second class
  smb.Little16(static_cast<std::uint32_t>(kBrowseSlot.size() + 1 + size)).Add(kBrowseSlot).Byte(0).Add(data.Done());
  const ByteVector from = EncodeNetBiosName(ownName, 0), to = EncodeNetBiosName(workgroup, 0x1e);
  ByteWriter datagram;
  datagram.Byte(kDirectGroup).Byte(0x02).Big16(id).Big32(ownAddress).Big16(138);
  datagram.Big16(static_cast<std::uint32_t>(from.size() + to.size() + smb.Size())).Big16(0);
  return datagram.Add(from).Add(to).Add(smb.Done()).Done();
}

std::optional<Announcement> ReadAnnouncement(Bytes datagram) {
  ByteReader reader(datagram);
  const std::uint8_t kind = reader.Byte();
  if (kind < kDirectGroup - 1 || kind > kBroadcastDatagram) return std::nullopt;
  reader.Skip(13);
  SkipRecordName(reader);
  SkipRecordName(reader);
  const auto data = BrowseData(reader.Take(reader.Left()));
  if (!data) return std::nullopt;
  ByteReader body(*data);
  const std::uint8_t operation = body.Byte();
  if (operation != kHostAnnouncement && operation != kMasterAnnouncement) return std::nullopt;
  body.Skip(5);
  Announcement announcement;
  announcement.name = NameOf(body.Take(kNameSize + 1));
  announcement.major = body.Byte();
  announcement.minor = body.Byte();
  announcement.type = body.Little32();
  if (!body.Ok() || announcement.name.isEmpty()) return std::nullopt;
  return announcement;
}

}  // namespace quarl::netscan
