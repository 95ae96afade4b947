#pragma once

#include <QByteArray>
#include <vector>

#include "netscan/api/Bytes.h"
#include "support/Text.h"

namespace quarl::netscan {

// Packets as machines send them, written byte by byte for the tests.

struct NetBiosEntry {
  const char* name;
  std::uint8_t suffix;
  bool group;
};
ByteVector NodeStatusReply(std::uint16_t id, const std::vector<NetBiosEntry>& names);

ByteVector AnnouncementDatagram(std::uint8_t operation, const QByteArray& name, std::uint8_t major, std::uint8_t minor,
                                std::uint32_t type);

/// The answer to a session set-up, without its length. Texts in ASCII; a null one is left out.
ByteVector SmbChallengeReply(const char* computer, const char* domain, const char* dnsComputer, std::uint8_t major,
                             std::uint8_t minor, std::uint16_t build);

/// A multicast DNS response about a file service of "Lab box" on alpha.local at 10.88.0.10, with compressed names.
ByteVector DnsReply();

inline Bytes BytesOf(const QByteArray& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::size_t>(text.size())};
}

}  // namespace quarl::netscan
