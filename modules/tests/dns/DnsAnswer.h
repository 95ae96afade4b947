#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::checks {

/// One type of record.
struct DnsType {
  const char* name;  ///< "MX"
  int number;
};

/// A, AAAA, CNAME, MX, NS, PTR, SOA, SRV, TXT.
const std::vector<DnsType>& DnsTypes();

/// What a message says of one type.
struct DnsAnswer {
  int code = 0;  ///< response code, 0 to 15
  /// One text a record, in the message's order: "192.0.2.1", "10 mail.example.org". Names are in lower case without
  /// the dot at the end (a root alone is "."); a TXT record's strings are joined, whatever bytes they have.
  std::vector<std::string> records{};
};

/// Reads the records of a type in the answer section, whoever owns them (an alias leads to another name). Nothing when
/// the message is damaged.
std::optional<DnsAnswer> ReadAnswer(const std::vector<uint8_t>& message, int type);

/// "NXDOMAIN", "SERVFAIL" ...
std::string CodeName(int code);

/// A text that somebody wrote, in the form in which records of the type stand in DnsAnswer; nothing when no record of
/// the type can look so.
std::optional<std::string> Normal(std::string_view text, int type);

/// The name under which an address has its PTR record; nothing when the text is no IP address.
std::optional<std::string> ReverseName(const std::string& address);

}  // namespace quarl::checks
