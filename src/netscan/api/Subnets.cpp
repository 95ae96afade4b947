#include "netscan/api/Subnets.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <memory>
#include <unordered_set>

namespace quarl::netscan {
namespace {

constexpr in_addr_t kLargestSweep = 0xfffffc00;  // /22
constexpr in_addr_t kSmallestNet = 0xfffffffc;   // /30: smaller ones have a single peer

using Interfaces = std::unique_ptr<ifaddrs, decltype(&freeifaddrs)>;

Interfaces AllInterfaces() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) first = nullptr;
  return {first, &freeifaddrs};
}

bool HasIpv4(const ifaddrs& entry) {
  return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_INET;
}

in_addr_t AddressOf(const sockaddr* name) {
  return reinterpret_cast<const sockaddr_in*>(name)->sin_addr.s_addr;
}

bool IsAttachedNet(const ifaddrs& entry) {
  constexpr unsigned kWanted = IFF_UP | IFF_RUNNING, kUnwanted = IFF_LOOPBACK | IFF_POINTOPOINT;
  if (!HasIpv4(entry) || entry.ifa_netmask == nullptr) return false;
  if ((entry.ifa_flags & (kWanted | kUnwanted)) != kWanted) return false;
  return ntohl(AddressOf(entry.ifa_netmask)) <= kSmallestNet;
}

}  // namespace

std::vector<Subnet> AttachedSubnets() {
  std::vector<Subnet> subnets;
  const Interfaces interfaces = AllInterfaces();
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
    if (!IsAttachedNet(*entry)) continue;
    const in_addr_t own = AddressOf(entry->ifa_addr), mask = AddressOf(entry->ifa_netmask);
    subnets.push_back({entry->ifa_name, if_nametoindex(entry->ifa_name), own, mask, own | ~mask});
  }
  return subnets;
}

bool IsLargerThanASweep(const Subnet& subnet) {
  return ntohl(subnet.mask) < kLargestSweep;
}

std::vector<in_addr_t> OwnAddresses() {
  std::vector<in_addr_t> own;
  const Interfaces interfaces = AllInterfaces();
  for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next)
    if (HasIpv4(*entry)) own.push_back(AddressOf(entry->ifa_addr));
  return own;
}

std::vector<in_addr_t> SweepAddresses(const std::vector<Subnet>& subnets, std::size_t atMost) {
  std::vector<in_addr_t> addresses;
  std::unordered_set<in_addr_t> known;
  for (const Subnet& subnet : subnets) known.insert(subnet.own);
  for (const Subnet& subnet : subnets) {
    const in_addr_t own = ntohl(subnet.own), netMask = ntohl(subnet.mask);
    const in_addr_t mask = std::max(netMask, kLargestSweep);
    const in_addr_t network = own & netMask, broadcast = own | ~netMask;
    const std::uint64_t last = own | ~mask;
    for (std::uint64_t next = own & mask; next <= last && addresses.size() < atMost; ++next) {
      const auto host = static_cast<in_addr_t>(next);
      if (host == network || host == broadcast || !known.insert(htonl(host)).second) continue;
      addresses.push_back(htonl(host));
    }
  }
  return addresses;
}

}  // namespace quarl::netscan
