#include "netscan/api/TestPackets.h"

namespace quarl::netscan {
namespace {

ByteVector Utf16(const char* text) {
  ByteWriter writer;
  for (const char c : QByteArray(text)) writer.Byte(static_cast<std::uint8_t>(c)).Byte(0);
  return writer.Done();
}

}  // namespace

ByteVector NodeStatusReply(std::uint16_t id, const std::vector<NetBiosEntry>& names) {
  ByteWriter writer;
  writer.Big16(id).Big16(0x8400).Big16(0).Big16(1).Zeros(4);
  writer.Byte(0x20).Add(QByteArray("CKAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA")).Byte(0);
  const auto count = static_cast<std::uint8_t>(names.size());
  writer.Big16(0x21).Big16(1).Big32(0).Big16(1U + 18U * count + 46U).Byte(count);
  for (const NetBiosEntry& entry : names)
    writer.Add(QByteArray(entry.name).leftJustified(15)).Byte(entry.suffix).Big16(entry.group ? 0x8400 : 0x0400);
  return writer.Zeros(46).Done();
}

ByteVector AnnouncementDatagram(std::uint8_t operation, const QByteArray& name, std::uint8_t major, std::uint8_t minor,
                                std::uint32_t type) {
  ByteWriter data;
  data.Byte(operation).Byte(3).Little32(60000).Add(name.leftJustified(16, '\0')).Byte(major).Byte(minor);
  data.Little32(type).Byte(15).Byte(1).Little16(0xaa55).Add(QByteArray("comment")).Byte(0);
  const auto size = static_cast<std::uint32_t>(data.Size());
  ByteWriter smb;
  smb.Add(QByteArray("\xffSMB\x25")).Zeros(27).Byte(17).Zeros(2).Little16(size).Zeros(16);
  smb.Zeros(2).Little16(size).Little16(86).Byte(3).Byte(0).Little16(1).Little16(1).Little16(2);
  smb.Little16(17 + size).Add(QByteArray("\\MAILSLOT\\BROWSE")).Byte(0);
  ByteWriter datagram;
  datagram.Byte(0x11).Byte(0x02).Big16(7).Big32(0x0a58000a).Big16(138).Big16(68).Big16(0);
  for (int names = 0; names < 2; ++names)
    datagram.Byte(0x20).Add(QByteArray("EBCACACACACACACACACACACACACACAAA")).Byte(0);
  ByteVector body = smb.Done();
  return datagram.Add(body).Add(data.Done()).Done();
}

ByteVector SmbChallengeReply(const char* computer, const char* domain, const char* dnsComputer, std::uint8_t major,
                             std::uint8_t minor, std::uint16_t build) {
  ByteWriter pairs;
  const std::pair<std::uint32_t, const char*> all[] = {{2, domain}, {1, computer}, {3, dnsComputer}};
  for (const auto& [kind, text] : all) {
    if (text == nullptr) continue;
    const ByteVector value = Utf16(text);
    pairs.Little16(kind).Little16(static_cast<std::uint32_t>(value.size())).Add(value);
  }
  pairs.Zeros(4);
  const auto size = static_cast<std::uint32_t>(pairs.Size());
  ByteWriter writer;
  writer.Add(QByteArray("\xfeSMB")).Little16(64).Zeros(2).Little32(0xc0000016).Little16(1).Zeros(50);
  writer.Little16(9).Zeros(2).Little16(72).Little16(56 + size);
  writer.Add(QByteArray("NTLMSSP")).Byte(0).Little32(2).Zeros(8).Little32(0x02000001).Zeros(16);
  writer.Little16(size).Little16(size).Little32(56).Byte(major).Byte(minor).Little16(build).Zeros(4);
  return writer.Add(pairs.Done()).Done();
}

ByteVector DnsReply() {
  ByteWriter writer;
  writer.Big16(0).Big16(0x8400).Big16(0).Big16(1).Big16(0).Big16(2);
  writer.Byte(4).Add(QByteArray("_smb")).Byte(4).Add(QByteArray("_tcp")).Byte(5).Add(QByteArray("local")).Byte(0);
  writer.Big16(12).Big16(1).Big32(10).Big16(10).Byte(7).Add(QByteArray("Lab box")).Big16(0xc00c);
  writer.Big16(0xc027).Big16(33).Big16(0x8001).Big32(10).Big16(14).Zeros(4).Big16(445);
  writer.Byte(5).Add(QByteArray("alpha")).Big16(0xc016);
  writer.Big16(0xc043).Big16(1).Big16(0x8001).Big32(10).Big16(4).Big32(0x0a58000a);
  return writer.Done();
}

}  // namespace quarl::netscan
