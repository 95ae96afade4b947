#pragma once

#include <optional>
#include <string>

#include "Wire.h"

namespace quarl::tcpport {

/// How an answer ended.
struct Answer {
  bool found = false;     ///< the expected bytes came
  bool ended = false;     ///< the server ended the connection
  bool tooLong = false;   ///< more came than a check reads
  std::string beginning;  ///< of what came, for the text
};

/// Sends (when there is anything) and reads until the expected bytes (at least one) have come, the server ends, the
/// time is over, or a mebibyte has come.
kit::Task<Answer> Converse(Wire& wire, std::string_view send, std::string_view expect, const kit::Deadline& deadline);

}  // namespace quarl::tcpport
