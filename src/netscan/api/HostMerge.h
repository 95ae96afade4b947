#pragma once

#include <span>

#include "netscan/api/HostSource.h"

namespace quarl::netscan {

/// Puts sightings together to machines: by address, then by name. Each machine gets its best name (cleaned; empty when
/// nobody named it) and one address, the one that answered the echo rather than another, the lowest of several.
/// In the order of the addresses, those without one at the end.
struct MergedHost {
  in_addr_t address = 0;  ///< network byte order; 0 when unknown
  MachineRecord machine;
  std::optional<EchoStatus> echo;
  QString finding;  ///< see FoundHost
};
std::vector<MergedHost> MergeSightings(std::span<const Sighting> sightings);

/// Names the nameless by their addresses, puts the machines in order by name and labels them.
std::vector<FoundHost> ListHosts(std::vector<MergedHost> merged);

}  // namespace quarl::netscan
