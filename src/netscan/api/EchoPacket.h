#pragma once

#include <netinet/in.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "netscan/api/Bytes.h"
#include "netscan/api/EchoStatus.h"

// The bytes of echoes on the wire. No Qt here: the helper program uses it too.

namespace quarl::netscan {

/// What every echo carries and must bring back.
inline constexpr std::string_view kEchoData = "TEST_DATA";
inline constexpr std::size_t kIcmpHeaderSize = 8;
inline constexpr std::size_t kEchoSize = kIcmpHeaderSize + kEchoData.size();

/// How one echo of a channel ended. The address is the host that answered, or for an error the host that was asked;
/// network byte order.
struct EchoAnswer {
  std::uint16_t sequence = 0;
  in_addr_t address = 0;
  EchoStatus status = EchoStatus::Answered;
};

/// The whole ICMP message of a request, checksum included.
std::array<std::uint8_t, kEchoSize> MakeEchoRequest(std::uint16_t id, std::uint16_t sequence);

/// The ICMP message inside a whole IPv4 packet, options skipped; nothing when the packet is no whole ICMP packet.
std::optional<Bytes> IcmpOfPacket(Bytes packet);

/// The sequence of an echo reply: right type, checksum and data, and the id when one is given; nothing otherwise.
std::optional<std::uint16_t> ReadEchoReply(Bytes icmp, std::optional<std::uint16_t> id);

/// The sequence of our own request as an ICMP error quotes it. Eight bytes are all that a router has to quote.
std::optional<std::uint16_t> ReadQuotedRequest(Bytes icmp, std::optional<std::uint16_t> id);

/// Whether a reply of this sender belongs to a request to this address; 0.0.0.0 is answered by 127.0.0.1.
bool AnswersFor(in_addr_t sender, in_addr_t asked);

/// Whether an echo may go there at all: broadcast to everybody and multicast groups are no host's address.
bool IsHostAddress(in_addr_t address);

}  // namespace quarl::netscan
