#pragma once

#include "kit/Connection.h"

namespace quarl::tcpport {

/// Bytes to and from a server. Errors as those of kit::Connection.
class Wire {
 public:
  virtual ~Wire() = default;
  virtual kit::Task<void> Send(std::string_view bytes, const kit::Deadline& deadline) = 0;
  /// How many bytes have come; 0 at the end of what the server sends.
  virtual kit::Task<std::size_t> Receive(std::span<char> room, const kit::Deadline& deadline) = 0;
};

/// The connection as it is.
class PlainWire final : public Wire {
 public:
  /// @param connection outlives this object.
  explicit PlainWire(kit::Connection& connection) : connection_(connection) {}
  kit::Task<void> Send(std::string_view bytes, const kit::Deadline& deadline) override {
    return connection_.Send(bytes, deadline);
  }
  kit::Task<std::size_t> Receive(std::span<char> room, const kit::Deadline& deadline) override {
    return connection_.Receive(room, deadline);
  }

 private:
  kit::Connection& connection_;
};

}  // namespace quarl::tcpport
