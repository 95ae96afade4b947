#pragma once

#include <string>

#include "support/WebServer.h"

namespace quarl::testing {

/// A TCP server on loopback.
class TestServer : public LoopbackServer {
 public:
  using LoopbackServer::LoopbackServer;

  /// Sends a text and waits until the other side ends.
  static Serve Says(std::string text);
  /// Reads until these bytes have come, then sends the answer in pieces of two bytes.
  static Serve Answers(std::string question, std::string answer);
  /// Reads whatever comes until the other side ends, says nothing.
  static Serve Listens();
};

/// A certificate with its key, signed by itself, as a server uses it.
class TestCertificate {
 public:
  /// @param name DNS name that it is for
  /// @param days until it ends; negative for one that has ended
  TestCertificate(const std::string& name, int days);

  /// The certificate in PEM form.
  const std::string& Pem() const { return pem_; }
  /// Shakes hands, sends a text, waits until the other side ends.
  TestServer::Serve Says(std::string text) const;

 private:
  Certificate certificate_;
  std::string pem_;
};

}  // namespace quarl::testing
