#include "netscan/api/EchoPacket.h"

#include <netinet/ip_icmp.h>

#include <algorithm>

namespace quarl::netscan {
namespace {

constexpr std::size_t kIpHeaderSize = 20;

std::uint16_t WordAt(Bytes bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

void PutWord(std::span<std::uint8_t> bytes, std::size_t at, std::uint16_t word) {
  bytes[at] = static_cast<std::uint8_t>(word >> 8);
  bytes[at + 1] = static_cast<std::uint8_t>(word);
}

// The checksum over the bytes: what belongs into a field that is 0 now, or 0 where the field is right already.
std::uint16_t Checksum(Bytes bytes) {
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) sum += WordAt(bytes, at);
  if (bytes.size() % 2 != 0) sum += std::uint32_t{bytes.back()} << 8;
  while (sum >> 16 != 0) sum = (sum & 0xffff) + (sum >> 16);
  return static_cast<std::uint16_t>(~sum);
}

std::optional<std::uint16_t> SequenceOf(Bytes icmp, std::uint8_t type, std::optional<std::uint16_t> id) {
  if (icmp.size() < kIcmpHeaderSize || icmp[0] != type || icmp[1] != 0) return std::nullopt;
  if (id && WordAt(icmp, 4) != *id) return std::nullopt;
  return WordAt(icmp, 6);
}

}  // namespace

std::array<std::uint8_t, kEchoSize> MakeEchoRequest(std::uint16_t id, std::uint16_t sequence) {
  std::array<std::uint8_t, kEchoSize> packet{};
  packet[0] = ICMP_ECHO;
  PutWord(packet, 4, id);
  PutWord(packet, 6, sequence);
  std::copy(kEchoData.begin(), kEchoData.end(), packet.begin() + kIcmpHeaderSize);
  PutWord(packet, 2, Checksum(packet));
  return packet;
}

std::optional<Bytes> IcmpOfPacket(Bytes packet) {
  if (packet.size() < kIpHeaderSize || packet[0] >> 4 != 4) return std::nullopt;
  const std::size_t header = std::size_t{4} * (packet[0] & 0x0fU);
  const std::size_t total = WordAt(packet, 2);
  if (header < kIpHeaderSize || total < header || total > packet.size()) return std::nullopt;
  if (packet[9] != IPPROTO_ICMP) return std::nullopt;
  return packet.subspan(header, total - header);
}

std::optional<std::uint16_t> ReadEchoReply(Bytes icmp, std::optional<std::uint16_t> id) {
  const auto sequence = SequenceOf(icmp, ICMP_ECHOREPLY, id);
  if (!sequence || icmp.size() != kEchoSize || Checksum(icmp) != 0) return std::nullopt;
  if (!std::equal(kEchoData.begin(), kEchoData.end(), icmp.begin() + kIcmpHeaderSize)) return std::nullopt;
  return sequence;
}

std::optional<std::uint16_t> ReadQuotedRequest(Bytes icmp, std::optional<std::uint16_t> id) {
  return SequenceOf(icmp, ICMP_ECHO, id);
}

bool AnswersFor(in_addr_t sender, in_addr_t asked) {
  return sender == asked || (asked == INADDR_ANY && sender == htonl(INADDR_LOOPBACK));
}

bool IsHostAddress(in_addr_t address) {
  return address != INADDR_NONE && !IN_MULTICAST(ntohl(address));
}

}  // namespace quarl::netscan
