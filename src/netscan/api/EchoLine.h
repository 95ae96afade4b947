#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "netscan/api/EchoPacket.h"

// What the helper program and its caller say to each other: lines of ASCII text.
// No Qt here: the helper program uses it too.

namespace quarl::netscan {

/// The helper's first line, once its socket is open.
inline constexpr std::string_view kEchoReady = "ready";
/// The longest line of either side, its line feed not counted: "65535 255.255.255.255 11050".
inline constexpr std::size_t kLongestEchoLine = 27;

/// A request: sequence (0 to 65535) and dotted address.
struct EchoRequest {
  std::uint16_t sequence = 0;
  in_addr_t address = 0;
};
std::string RequestLine(const EchoRequest& request);
/// Nothing for a line that RequestLine() never gives.
std::optional<EchoRequest> ReadRequestLine(std::string_view line);

std::string AnswerLine(const EchoAnswer& answer);
/// Nothing for a line that AnswerLine() never gives.
std::optional<EchoAnswer> ReadAnswerLine(std::string_view line);

/// Takes bytes as they come and gives them back as lines.
class EchoLines {
 public:
  /// False when a line is longer than any line of either side.
  [[nodiscard]] bool Add(std::string_view bytes);
  /// Takes the next whole line, its line feed not counted.
  std::optional<std::string> Next();
  bool HasNext() const { return pending_.find('\n') != std::string::npos; }

 private:
  std::string pending_;
};

}  // namespace quarl::netscan
