#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace quarl::testing {

/// A record of an answer: its type's number and its data, byte for byte.
struct DnsRecord {
  int type;
  std::string data;
};

/// Two bytes, the higher first.
std::string Bytes16(int number);

/// A name as labels, "mail.example.org".
std::string DnsName(const std::string& name);

/// An answer to a query, whose records belong to the name that was asked for.
std::string DnsReplyTo(const std::string& query, const std::vector<DnsRecord>& records, int code = 0,
                       bool truncated = false);

/// A server on one free UDP and TCP port of 127.0.0.1, on a thread of its own.
class DnsServer {
 public:
  /// The messages to send for a query, in this order; none at all leaves the client alone.
  using Answer = std::function<std::vector<std::string>(const std::string& query, bool tcp)>;
  explicit DnsServer(Answer answer);
  ~DnsServer();
  DnsServer(const DnsServer&) = delete;
  DnsServer& operator=(const DnsServer&) = delete;

  int Port() const { return port_; }

 private:
  void Serve();
  void ServeDatagram();
  void ServeConnection();

  Answer answer_;
  int port_ = 0;
  int datagrams_ = -1;
  int listener_ = -1;
  int stop_ = -1;
  std::thread thread_;
};

}  // namespace quarl::testing
