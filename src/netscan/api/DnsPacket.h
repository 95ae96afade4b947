#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "netscan/api/Bytes.h"

// DNS messages as multicast DNS uses them.

namespace quarl::netscan {

enum class DnsType : std::uint16_t { A = 1, Ptr = 12, Srv = 33 };

struct DnsQuestion {
  QString name;  ///< labels joined by "."; none longer than 63 bytes
  DnsType type = DnsType::Ptr;
};
/// One message with all questions; nothing when a name cannot be asked.
std::optional<ByteVector> DnsQuery(std::uint16_t id, const std::vector<DnsQuestion>& questions);

/// A record of one of the types above; others are left out. A "." inside a label reads as U+2024.
struct DnsRecord {
  QString owner;
  DnsType type = DnsType::A;
  QString target;             ///< Ptr, Srv
  std::uint32_t address = 0;  ///< A; network byte order
};
/// The records of a response, up to the first that is damaged; empty for anything that is no response.
std::vector<DnsRecord> ReadDnsResponse(Bytes packet);

}  // namespace quarl::netscan
