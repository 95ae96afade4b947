#include "kit/Connection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace quarl::kit {
namespace {

using Reason = ConnectionError::Reason;

[[noreturn]] void Fail(int error) {
  switch (error) {
    case ECONNREFUSED:
      throw ConnectionError(Reason::Refused, "Connection refused");
    case ETIMEDOUT:
      throw ConnectionError(Reason::TimedOut, "The host does not answer");
    case EHOSTUNREACH:
      throw ConnectionError(Reason::Unreachable, "No route to the host");
    case ENETUNREACH:
      throw ConnectionError(Reason::Unreachable, "The network is unreachable");
    case ECONNRESET:
    case ECONNABORTED:
    case EPIPE:
      throw ConnectionError(Reason::Closed, "The other side has broken the connection off");
    default:
      throw ConnectionError(Reason::Local, "No connection: " + std::generic_category().message(error));
  }
}

union Endpoint {
  sockaddr any;
  sockaddr_in four;
  sockaddr_in6 six;
};

// Fills the end point and gives its size; 0 for a text that is no address.
socklen_t Fill(Endpoint& endpoint, const std::string& address, std::uint16_t port) {
  std::memset(&endpoint, 0, sizeof endpoint);
  if (inet_pton(AF_INET, address.c_str(), &endpoint.four.sin_addr) == 1) {
    endpoint.four.sin_family = AF_INET;
    endpoint.four.sin_port = htons(port);
    return sizeof endpoint.four;
  }
  if (inet_pton(AF_INET6, address.c_str(), &endpoint.six.sin6_addr) != 1) return 0;
  endpoint.six.sin6_family = AF_INET6;
  endpoint.six.sin6_port = htons(port);
  return sizeof endpoint.six;
}

}  // namespace

Connection::~Connection() {
  if (descriptor_ >= 0) close(descriptor_);
}

Task<void> Connection::Connect(const std::string& address, std::uint16_t port, const Deadline& deadline) {
  Endpoint endpoint;
  const socklen_t size = Fill(endpoint, address, port);
  if (size == 0) throw ConnectionError(Reason::Local, "\"" + address + "\" is no IP address");
  descriptor_ = socket(endpoint.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) Fail(errno);
  if (connect(descriptor_, &endpoint.any, size) == 0) co_return;
  // A connect() that a signal interrupts goes on all the same.
  if (errno != EINPROGRESS && errno != EINTR) Fail(errno);
  const short came = co_await Ready(descriptor_, POLLOUT, deadline);
  if (came == 0) throw ConnectionError(Reason::TimedOut, "No connection within the time-out");
  if ((came & (POLLERR | POLLHUP | POLLNVAL)) == 0) co_return;
  int error = 0;
  socklen_t length = sizeof error;
  getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &length);
  if (error != 0) Fail(error);
}

Task<void> Connection::Await(short events, const Deadline& deadline) {
  const short came = co_await Ready(descriptor_, events, deadline);
  if (came == 0) throw ConnectionError(Reason::TimedOut, "No answer within the time-out");
}

Task<void> Connection::Send(std::string_view bytes, const Deadline& deadline) {
  while (!bytes.empty()) {
    const ssize_t sent = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    else if (errno == EAGAIN)
      co_await Await(POLLOUT, deadline);
    else if (errno != EINTR)
      Fail(errno);
  }
}

Task<std::size_t> Connection::Receive(std::span<char> room, const Deadline& deadline) {
  for (;;) {
    co_await Await(POLLIN, deadline);
    const ssize_t received = recv(descriptor_, room.data(), room.size(), 0);
    if (received >= 0) co_return static_cast<std::size_t>(received);
    if (errno != EAGAIN && errno != EINTR) Fail(errno);
  }
}

}  // namespace quarl::kit
