#pragma once

#include <chrono>
#include <optional>

#include "netscan/api/EchoPacket.h"

namespace quarl::netscan {

enum class EchoMethod { Datagram, Raw, Helper };

/// A way on which echoes leave and answers come back. It keeps no count of what is under way: whoever sends matches
/// the answers by sequence and address. Used by one thread at a time.
class EchoChannel {
 public:
  EchoChannel() = default;
  EchoChannel(const EchoChannel&) = delete;
  EchoChannel& operator=(const EchoChannel&) = delete;
  virtual ~EchoChannel() = default;

  virtual EchoMethod Method() const = 0;
  /// Sends one echo without blocking. False: nothing was sent for now, try again a little later. An address that
  /// cannot be sent to gives its answer through Receive().
  [[nodiscard]] virtual bool Send(std::uint16_t sequence, in_addr_t address) = 0;
  /// The next answer that has come in, without waiting. Answers may be foreign or late.
  virtual std::optional<EchoAnswer> Receive() = 0;
  /// Returns as soon as there may be something to receive, at the latest after this time.
  virtual void Wait(std::chrono::milliseconds atMost) = 0;
  /// For poll(); -1 when there is none. Owned by the channel.
  virtual int Descriptor() const { return -1; }
};

}  // namespace quarl::netscan
