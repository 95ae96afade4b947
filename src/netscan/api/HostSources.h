#pragma once

#include <memory>

#include "netscan/api/HostSource.h"

// Makers of all sources. Each works as an ordinary user; one that this user or machine cannot run says so in a note.

namespace quarl::netscan {

struct ScanSetup;

/// NetBIOS node status: broadcast, to each address of the sweep, and to each machine that was seen.
std::unique_ptr<HostSource> MakeNetBiosSource();
/// Version and names from the challenge of an SMB2 server, of each machine that was seen.
std::unique_ptr<HostSource> MakeSmbSource();
/// One-shot questions of multicast DNS: services, and the names of the addresses that were seen.
std::unique_ptr<HostSource> MakeMdnsSource();
/// WS-Discovery: a probe, then each device's description.
std::unique_ptr<HostSource> MakeWsDiscoverySource();
/// The neighbour table of the kernel: who has answered on the link, be it silent otherwise.
std::unique_ptr<HostSource> MakeNeighbourSource();
/// Echoes to each address of the sweep, in windows.
std::unique_ptr<HostSource> MakePingSweep(const ScanSetup& setup);
/// Browser announcements, where the port can be bound.
std::unique_ptr<HostSource> MakeAnnouncementSource();

}  // namespace quarl::netscan
