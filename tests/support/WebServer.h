#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quarl::testing {

/// A key and a certificate of its own signature.
class Certificate {
 public:
  /// @param names for which it holds ("DNS:host,IP:address"); days counts from now and may be negative.
  Certificate(const std::string& names, int days);
  /// A PEM file of the certificate, removed with this object.
  const std::string& Path() const { return path_; }
  std::shared_ptr<SSL_CTX> Context() const { return context_; }
  ~Certificate();
  Certificate(const Certificate&) = delete;
  Certificate& operator=(const Certificate&) = delete;

 private:
  std::string path_;
  std::shared_ptr<SSL_CTX> context_;
};

/// Serves one connection after the other on a free loopback port, on a thread of its own.
class LoopbackServer {
 public:
  /// What is done with each connection; it is closed afterwards, and shut down when the server goes meanwhile.
  using Serve = std::function<void(int connection)>;
  /// @param address 127.0.0.1 or ::1
  explicit LoopbackServer(Serve serve, const std::string& address = "127.0.0.1");
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::uint16_t Port() const { return port_; }

 private:
  void Run();

  Serve serve_;
  std::uint16_t port_ = 0;
  int listener_ = -1;
  std::atomic<int> connection_{-1};
  std::thread thread_;
};

/// Answers HTTP requests on a free loopback port on a thread of its own, one connection after the other. What an
/// answer is, byte for byte, is the test's matter.
class WebServer {
 public:
  /// A client's connection. Writing to one that has gone gives false.
  class Peer {
   public:
    virtual ~Peer() = default;
    virtual bool Write(const std::string& bytes) = 0;
    /// At most one buffer; "" when the client has gone.
    virtual std::string Read() = 0;
  };
  /// @param request head and body as they came
  using Answer = std::function<void(const std::string& request, Peer& peer)>;

  /// Without a certificate plain HTTP. @param address 127.0.0.1 or ::1
  explicit WebServer(Answer answer, const Certificate* certificate = nullptr, const std::string& address = "127.0.0.1");

  int Port() const { return server_.Port(); }
  /// The requests that have come.
  std::vector<std::string> Requests() const;

 private:
  void ServeOne(int connection);

  Answer answer_;
  std::shared_ptr<SSL_CTX> context_;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  LoopbackServer server_;  // ends first
};

}  // namespace quarl::testing
