#include "netscan/api/FoundHost.h"

#include <algorithm>
#include <iterator>

namespace quarl::netscan {

QString FoundHost::Reason() const {
  if (unlisted == Unlisted::NoAddress)
    return QStringLiteral("%1 was seen, but its address is not known.").arg(machine.name);
  if (unlisted == Unlisted::NoEcho)
    return QStringLiteral("%1 (%2) was seen, but did not answer the echo.").arg(machine.name, address);
  return {};
}

std::vector<FoundHost> ListedHosts(const ScanResult& result, quint32 filter) {
  std::vector<FoundHost> listed;
  std::copy_if(result.hosts.begin(), result.hosts.end(), std::back_inserter(listed), [&](const FoundHost& host) {
    return host.unlisted == Unlisted::No && (host.label.systemClass & filter) != 0;
  });
  return listed;
}

}  // namespace quarl::netscan
