#pragma once

#include <memory>
#include <string>

#include "Wire.h"

struct ssl_st;

namespace quarl::tcpport {

/// What a server's certificate must be.
enum class Trust { ChainAndName, Chain, Anybody };

/// What TLS itself complains of: a certificate, a protocol.
class TlsError : public kit::Error {
 public:
  using Error::Error;
};

/// A TLS session over a connection. One thread.
class TlsWire final : public Wire {
 public:
  /// Throws TlsError.
  /// @param connection outlives this object.
  /// @param name host name or IP address that is asked for; "" for none, which fits no certificate's name
  TlsWire(kit::Connection& connection, Trust trust, const std::string& name);
  ~TlsWire() override;

  /// Before anything is sent or received. Throws TlsError and kit::ConnectionError.
  kit::Task<void> ShakeHands(const kit::Deadline& deadline);
  kit::Task<void> Send(std::string_view bytes, const kit::Deadline& deadline) override;
  kit::Task<std::size_t> Receive(std::span<char> room, const kit::Deadline& deadline) override;

 private:
  void Expect(Trust trust, const std::string& name);
  /// How one operation of the library ended.
  struct Outcome {
    int result = 0;
    int error = 0;  ///< SSL_get_error()'s
    int code = 0;   ///< errno
  };
  template <typename Operation>
  Outcome Try(const Operation& operation);
  /// Waits for what an operation wants; false when the other side has ended the session.
  kit::Task<bool> AwaitAfter(Outcome outcome, const kit::Deadline& deadline);
  struct Free {
    void operator()(ssl_st* session) const;
  };

  kit::Connection& connection_;
  Trust trust_;
  std::unique_ptr<ssl_st, Free> session_;
};

}  // namespace quarl::tcpport
