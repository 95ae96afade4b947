#pragma once

#include <netinet/in.h>

#include <string>
#include <vector>

namespace quarl::netscan {

/// A network that this machine is directly attached to. Addresses in network byte order.
struct Subnet {
  std::string interface;
  unsigned index = 0;  ///< of the interface
  in_addr_t own = 0;
  in_addr_t mask = 0;
  in_addr_t broadcast = 0;

  bool Holds(in_addr_t address) const { return (address & mask) == (own & mask); }
};

/// The networks behind the interfaces that are up, without loopback and links to a single peer.
std::vector<Subnet> AttachedSubnets();

/// Whether the subnet is too large to be swept whole; then only the /22 around our own address is.
bool IsLargerThanASweep(const Subnet& subnet);

/// All addresses of this machine, loopback ones included.
std::vector<in_addr_t> OwnAddresses();

/// The addresses to ask in a sweep: of each subnet every host but ourselves, of one larger than /22 the /22 around our
/// own address. Each address once, at most `atMost` in all.
std::vector<in_addr_t> SweepAddresses(const std::vector<Subnet>& subnets, std::size_t atMost);

}  // namespace quarl::netscan
