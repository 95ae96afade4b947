#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "kit/Deadline.h"
#include "kit/Error.h"
#include "kit/Steps.h"

namespace quarl::kit {

/// Why there is no connection, or none any more.
class ConnectionError : public Error {
 public:
  enum class Reason {
    TimedOut,
    Refused,
    Unreachable,
    Closed,  ///< by the other side
    Local    ///< nothing can be said about the other side: bad address, no descriptors, not permitted
  };
  ConnectionError(Reason reason, const std::string& text) : Error(text), reason_(reason) {}
  Reason Why() const { return reason_; }

 private:
  Reason reason_;
};

/// A TCP connection over a socket that never blocks. No call raises SIGPIPE. One thread at a time.
class Connection {
 public:
  Connection() = default;
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Connects; once. Throws ConnectionError.
  /// @param address IPv4 or IPv6 in its usual text form, no name.
  Task<void> Connect(const std::string& address, std::uint16_t port, const Deadline& deadline);
  /// For libraries; owned by this object.
  int Descriptor() const { return descriptor_; }
  /// Sends all bytes. Throws ConnectionError.
  Task<void> Send(std::string_view bytes, const Deadline& deadline);
  /// Waits for bytes and gives how many have come, 0 at the end of what the other side sends. Throws ConnectionError.
  Task<std::size_t> Receive(std::span<char> room, const Deadline& deadline);
  /// Waits for one of these events. Throws ConnectionError when the time is over.
  Task<void> Await(short events, const Deadline& deadline);

 private:
  int descriptor_ = -1;
};

}  // namespace quarl::kit
