#include "netscan/api/clsNetAPI.h"

namespace quarl::netscan {

clsNetAPI::clsNetAPI(QString helperProgram) : helperProgram_(std::move(helperProgram)) {}

qint32 clsNetAPI::Ping(const QString& ipAddress) const {
  const auto address = EchoAddress(ipAddress);
  if (!address) return -1;
  const auto channel = OpenEchoChannel(helperProgram_);
  if (!channel) return 0;
  return static_cast<qint32>(EchoSession(*channel).Ask(*address).status);
}

}  // namespace quarl::netscan
