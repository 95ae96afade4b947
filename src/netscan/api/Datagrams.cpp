#include "netscan/api/Datagrams.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quarl::netscan {
namespace {

constexpr int kPacketsAtOnce = 512;  // then other sockets have their turn

sockaddr_in SocketName(in_addr_t address, in_port_t port) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = address;
  name.sin_port = htons(port);
  return name;
}

template <typename Value>
void SetOption(int descriptor, int level, int option, const Value& value) {
  setsockopt(descriptor, level, option, &value, sizeof value);
}

}  // namespace

std::unique_ptr<Datagrams> Datagrams::Open(ScanLoop& loop, in_port_t port, Received received) {
  const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return nullptr;
  SetOption(descriptor, SOL_SOCKET, SO_BROADCAST, 1);
  SetOption(descriptor, IPPROTO_IP, IP_MULTICAST_LOOP, 0);
  SetOption(descriptor, IPPROTO_IP, IP_MULTICAST_TTL, 1);
  const sockaddr_in name = SocketName(INADDR_ANY, port);
  if (bind(descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) {
    const int error = errno;
    close(descriptor);
    errno = error;
    return nullptr;
  }
  return std::unique_ptr<Datagrams>(new Datagrams(loop, descriptor, std::move(received)));
}

Datagrams::Datagrams(ScanLoop& loop, int descriptor, Received received)
    : loop_(loop), descriptor_(descriptor), received_(std::move(received)) {
  loop_.Watch(descriptor_, POLLIN, [this](short) { TakeAll(); });
}

Datagrams::~Datagrams() {
  loop_.Forget(descriptor_);
  close(descriptor_);
}

bool Datagrams::Send(Bytes packet, in_addr_t to, in_port_t port) {
  const sockaddr_in name = SocketName(to, port);
  const ssize_t size = sendto(descriptor_, packet.data(), packet.size(), MSG_NOSIGNAL,
                              reinterpret_cast<const sockaddr*>(&name), sizeof name);
  return size >= 0 || (errno != EAGAIN && errno != ENOBUFS);
}

bool Datagrams::SendToGroup(Bytes packet, in_addr_t group, in_port_t port, in_addr_t own) {
  SetOption(descriptor_, IPPROTO_IP, IP_MULTICAST_IF, in_addr{own});
  return Send(packet, group, port);
}

void Datagrams::TakeAll() {
  std::array<std::uint8_t, 65536> buffer;
  for (int count = 0; count < kPacketsAtOnce; ++count) {
    sockaddr_in from{};
    socklen_t fromSize = sizeof from;
    const ssize_t size =
        recvfrom(descriptor_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from), &fromSize);
    if (size < 0) return;
    received_(Bytes(buffer.data(), static_cast<std::size_t>(size)), from.sin_addr.s_addr);
  }
}

}  // namespace quarl::netscan
