#include "support/DnsServer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace quarl::testing {
namespace {

constexpr std::size_t kHead = 12;

/// The question behind a query's head: name, type, class.
std::string Question(const std::string& query) {
  return query.substr(kHead, query.find('\0', kHead) + 5 - kHead);
}

int Bound(int kind, int& port) {
  const int handle = ::socket(AF_INET, kind | SOCK_CLOEXEC, 0);
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  place.sin_port = htons(static_cast<uint16_t>(port));
  socklen_t size = sizeof place;
  auto* const address = reinterpret_cast<sockaddr*>(&place);
  if (::bind(handle, address, size) != 0 || ::getsockname(handle, address, &size) != 0) {
    ::close(handle);
    return -1;
  }
  port = ntohs(place.sin_port);
  return handle;
}

}  // namespace

std::string Bytes16(int number) {
  return {static_cast<char>(number >> 8), static_cast<char>(number & 255)};
}

std::string DnsName(const std::string& name) {
  std::string labels;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t dot = std::min(name.find('.', at), name.size());
    labels += static_cast<char>(dot - at) + name.substr(at, dot - at);
    at = dot + 1;
  }
  return labels + '\0';
}

std::string DnsReplyTo(const std::string& query, const std::vector<DnsRecord>& records, int code, bool truncated) {
  std::string reply = query.substr(0, 2) + Bytes16(0x8180 | code | (truncated ? 0x200 : 0)) + Bytes16(1) +
                      Bytes16(static_cast<int>(records.size())) + Bytes16(0) + Bytes16(0) + Question(query);
  for (const DnsRecord& record : records) {
    reply += Bytes16(0xc00c) + Bytes16(record.type) + Bytes16(1) + Bytes16(0) + Bytes16(60) +
             Bytes16(static_cast<int>(record.data.size())) + record.data;
  }
  return reply;
}

DnsServer::DnsServer(Answer answer) : answer_(std::move(answer)), stop_(::eventfd(0, EFD_CLOEXEC)) {
  for (int i = 0; i < 50 && datagrams_ < 0; ++i) {
    if (listener_ >= 0) ::close(listener_);
    port_ = 0;
    listener_ = Bound(SOCK_STREAM, port_);
    datagrams_ = Bound(SOCK_DGRAM, port_);
  }
  if (datagrams_ < 0 || ::listen(listener_, 16) != 0) throw std::runtime_error("No port for both UDP and TCP");
  thread_ = std::thread([this] { Serve(); });
}

DnsServer::~DnsServer() {
  ::eventfd_write(stop_, 1);
  thread_.join();
  for (const int handle : {datagrams_, listener_, stop_}) ::close(handle);
}

void DnsServer::Serve() {
  for (;;) {
    std::array<pollfd, 3> waits{{{stop_, POLLIN, 0}, {datagrams_, POLLIN, 0}, {listener_, POLLIN, 0}}};
    ::poll(waits.data(), waits.size(), -1);
    if (waits[0].revents != 0) return;
    if (waits[1].revents != 0) ServeDatagram();
    if (waits[2].revents != 0) ServeConnection();
  }
}

void DnsServer::ServeDatagram() {
  std::array<char, 65536> bytes{};
  sockaddr_in from{};
  socklen_t size = sizeof from;
  auto* const address = reinterpret_cast<sockaddr*>(&from);
  const ssize_t count = ::recvfrom(datagrams_, bytes.data(), bytes.size(), 0, address, &size);
  if (count < static_cast<ssize_t>(kHead)) return;
  for (const std::string& message : answer_({bytes.data(), static_cast<std::size_t>(count)}, false))
    ::sendto(datagrams_, message.data(), message.size(), 0, address, size);
}

void DnsServer::ServeConnection() {
  const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  std::array<unsigned char, 2> length{};
  std::array<char, 65536> bytes{};
  if (::recv(connection, length.data(), 2, MSG_WAITALL) == 2) {
    const ssize_t count =
        ::recv(connection, bytes.data(), static_cast<std::size_t>(length[0] * 256 + length[1]), MSG_WAITALL);
    if (count >= static_cast<ssize_t>(kHead)) {
      for (const std::string& message : answer_({bytes.data(), static_cast<std::size_t>(count)}, true)) {
        const std::string framed = Bytes16(static_cast<int>(message.size())) + message;
        ::send(connection, framed.data(), framed.size(), MSG_NOSIGNAL);
      }
    }
  }
  ::close(connection);
}

}  // namespace quarl::testing
