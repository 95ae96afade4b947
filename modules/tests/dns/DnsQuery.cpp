#include "tests/dns/DnsQuery.h"

#include <ares.h>
#include <arpa/inet.h>
#include <arpa/nameser.h>
#include <poll.h>

#include <array>
#include <memory>
#include <stdexcept>

#include "kit/Deadline.h"

namespace quarl::checks {
namespace {

struct FreeChannel {
  void operator()(ares_channel channel) const { ares_destroy(channel); }
};
using Channel = std::unique_ptr<ares_channeldata, FreeChannel>;

void Demand(int status) {
  if (status != ARES_SUCCESS) throw std::runtime_error(std::string("No look-up can be made: ") + ares_strerror(status));
}

/// Two tries, the second with twice the time of the first, as the library doubles it.
Channel Open(const DnsRequest& request) {
  static const int ready = ares_library_init(ARES_LIB_INIT_ALL);
  Demand(ready);
  ares_options options{};
  options.flags = ARES_FLAG_NOSEARCH | ARES_FLAG_NOALIASES | ARES_FLAG_NOCHECKRESP |
                  (request.tcp ? ARES_FLAG_USEVC : 0) | (request.recursion ? 0 : ARES_FLAG_NORECURSE);
  options.timeout = std::max(static_cast<int>(request.limit.count() / 3), 1);
  options.tries = 2;
  ares_channel channel = nullptr;
  Demand(ares_init_options(&channel, &options, ARES_OPT_FLAGS | ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES));
  return Channel(channel);
}

/// False: the text is no address.
bool UseServer(ares_channel channel, const DnsRequest& request) {
  ares_addr_port_node node{};
  node.udp_port = node.tcp_port = request.port;
  node.family = request.server.find(':') == std::string::npos ? AF_INET : AF_INET6;
  if (::inet_pton(node.family, request.server.c_str(), &node.addr) != 1) return false;
  Demand(ares_set_servers_ports(channel, &node));
  return true;
}

DnsReply::End EndOf(int status) {
  switch (status) {
    case ARES_EBADNAME:
    case ARES_EBADFAMILY:
    case ARES_ENOMEM:
    case ARES_EFILE:
      return DnsReply::End::NotMade;
    default:
      return DnsReply::End::NoAnswer;
  }
}

struct Arrival {
  DnsReply reply{};
  bool done = false;
};

void Take(void* context, int status, int, unsigned char* message, int length) {
  auto& arrival = *static_cast<Arrival*>(context);
  arrival.done = true;
  if (message != nullptr && length >= NS_HFIXEDSZ) {
    arrival.reply.end = DnsReply::End::Answered;
    arrival.reply.message.assign(message, message + length);
    return;
  }
  arrival.reply.end = EndOf(status);
  const bool late = status == ARES_ECANCELLED || status == ARES_ETIMEOUT;
  arrival.reply.error = late ? "No answer came in time" : ares_strerror(status);
}

/// Waits for the channel's sockets or for its next time-out, and lets it work.
void Turn(ares_channel channel, const kit::Deadline& deadline) {
  std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets{};
  const int ready = ares_getsock(channel, sockets.data(), static_cast<int>(sockets.size()));
  const auto wanted = static_cast<unsigned>(ready);
  std::vector<pollfd> waits;
  for (unsigned i = 0; i < sockets.size(); ++i) {
    const bool reads = ARES_GETSOCK_READABLE(wanted, i) != 0;
    const bool writes = ARES_GETSOCK_WRITABLE(wanted, i) != 0;
    if (!reads && !writes) break;
    waits.push_back({sockets[i], static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0)), 0});
  }
  const auto left = deadline.Left().count();
  timeval most{static_cast<time_t>(left / 1000), static_cast<suseconds_t>(left % 1000 * 1000)}, until{};
  const timeval* const next = ares_timeout(channel, &most, &until);
  const auto wait = static_cast<int>(next->tv_sec * 1000 + (next->tv_usec + 999) / 1000);
  if (::poll(waits.data(), waits.size(), wait) <= 0) {
    ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);
    return;
  }
  for (const pollfd& done : waits) {
    if (done.revents == 0) continue;
    ares_process_fd(channel, (done.events & POLLIN) != 0 ? done.fd : ARES_SOCKET_BAD,
                    (done.events & POLLOUT) != 0 ? done.fd : ARES_SOCKET_BAD);
  }
}

}  // namespace

DnsReply Ask(const DnsRequest& request) {
  const auto begin = std::chrono::steady_clock::now();
  const kit::Deadline deadline(request.limit);
  Arrival arrival;
  const Channel channel = Open(request);
  if (!request.server.empty() && !UseServer(channel.get(), request)) {
    arrival.reply.error = "The server's address is no IP address: " + request.server;
    return arrival.reply;
  }
  ares_query(channel.get(), request.name.c_str(), ns_c_in, request.type, &Take, &arrival);
  while (!arrival.done && !deadline.IsOver()) Turn(channel.get(), deadline);
  ares_cancel(channel.get());
  arrival.reply.time = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
  return arrival.reply;
}

}  // namespace quarl::checks
