#pragma once

#include <bitset>
#include <vector>

#include "netscan/api/EchoLine.h"
#include "netscan/api/EchoPace.h"
#include "netscan/api/EchoSocket.h"

namespace quarl::netscan {

/// Sends the echoes that lines on the standard input ask for and writes their answers to the standard output.
/// The input is hostile: the first line that is no request ends the service, requests faster than EchoPace wait, and
/// only answers to own requests are passed on.
class EchoServer {
 public:
  explicit EchoServer(EchoSocket& socket);
  /// Until the input ends. False when the input held something else than requests or the output failed.
  bool Serve();

 private:
  static constexpr std::size_t kSequences = 65536;

  enum class Input { Open, Ended, Refused };
  Input SendRequests();
  Input ReadInput();
  bool PassAnswers();
  int LongestWaitMs() const;

  EchoSocket& socket_;
  EchoPace pace_;
  EchoLines lines_;
  std::optional<EchoRequest> held_;  ///< read, but not sent yet
  std::vector<in_addr_t> asked_;     ///< by sequence
  std::bitset<kSequences> open_;     ///< sequences without an answer
};

}  // namespace quarl::netscan
