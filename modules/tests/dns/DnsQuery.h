#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/common/Reply.h"

namespace quarl::checks {

struct DnsRequest {
  std::string name;
  int type = 1;          ///< number of the record type
  std::string server{};  ///< address; "" for the servers that this machine uses
  uint16_t port = 53;    ///< of the server; the machine's own servers have theirs
  bool tcp = false;      ///< TCP from the beginning; else UDP, and TCP when the answer does not fit
  bool recursion = true;
  std::chrono::milliseconds limit{5000};
};

struct DnsReply : Reply {
  std::vector<uint8_t> message{};  ///< as it came, hostile until read
};

/// Asks one question. Answers to another question or from another address are passed over. May be called by many
/// threads at once.
DnsReply Ask(const DnsRequest& request);

}  // namespace quarl::checks
