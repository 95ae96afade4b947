#include "netscan/api/NeighbourTable.h"

#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "netscan/api/Bytes.h"

namespace quarl::netscan {
namespace {

constexpr unsigned kOnceThere = NUD_REACHABLE | NUD_STALE | NUD_DELAY | NUD_PROBE | NUD_PERMANENT;

template <typename Header>
bool Take(ByteReader& reader, Header& header) {
  const Bytes bytes = reader.Take(sizeof header);
  if (bytes.size() == sizeof header) std::memcpy(&header, bytes.data(), sizeof header);
  return reader.Ok();
}

void AddNeighbour(std::vector<Neighbour>& neighbours, Bytes message) {
  ByteReader reader(message);
  ndmsg entry{};
  if (!Take(reader, entry) || (entry.ndm_state & kOnceThere) == 0) return;
  rtattr attribute{};
  while (Take(reader, attribute)) {
    const std::size_t size = std::max<std::size_t>(attribute.rta_len, sizeof attribute) - sizeof attribute;
    const Bytes value = reader.Take(size);
    reader.Skip((4 - size % 4) % 4);
    if (attribute.rta_type != NDA_DST || value.size() != sizeof(in_addr_t)) continue;
    Neighbour neighbour{0, static_cast<unsigned>(entry.ndm_ifindex), (entry.ndm_state & NUD_REACHABLE) != 0};
    std::memcpy(&neighbour.address, value.data(), sizeof neighbour.address);
    neighbours.push_back(neighbour);
  }
}

// False at the end of the table.
bool AddMessages(std::vector<Neighbour>& neighbours, Bytes bytes) {
  ByteReader reader(bytes);
  nlmsghdr header{};
  while (Take(reader, header)) {
    if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR || header.nlmsg_len < sizeof header)
      return false;
    const std::size_t size = header.nlmsg_len - sizeof header;
    AddNeighbour(neighbours, reader.Take(size));
    reader.Skip((4 - size % 4) % 4);
  }
  return true;
}

bool AskForTable(int descriptor) {
  struct {
    nlmsghdr header;
    ndmsg entry;
  } request{};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = RTM_GETNEIGH;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.entry.ndm_family = AF_INET;
  const timeval limit{1, 0};  // the kernel answers at once
  setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  return send(descriptor, &request, sizeof request, 0) == static_cast<ssize_t>(sizeof request);
}

}  // namespace

std::vector<Neighbour> ReadNeighbours() {
  std::vector<Neighbour> neighbours;
  const int descriptor = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (descriptor < 0) return neighbours;
  std::array<std::uint8_t, 65536> buffer;
  bool more = AskForTable(descriptor);
  while (more) {
    const ssize_t size = recv(descriptor, buffer.data(), buffer.size(), 0);
    more = size > 0 && AddMessages(neighbours, Bytes(buffer.data(), static_cast<std::size_t>(size)));
  }
  close(descriptor);
  return neighbours;
}

}  // namespace quarl::netscan
