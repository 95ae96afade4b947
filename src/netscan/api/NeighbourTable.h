#pragma once

#include <netinet/in.h>

#include <vector>

namespace quarl::netscan {

/// One entry of the kernel's table of the machines on its links.
struct Neighbour {
  in_addr_t address = 0;   ///< network byte order
  unsigned interface = 0;  ///< index
  bool confirmed = false;  ///< has just answered; otherwise it did some time ago
};

/// The IPv4 neighbours that have answered. Empty when the table cannot be read.
std::vector<Neighbour> ReadNeighbours();

}  // namespace quarl::netscan
