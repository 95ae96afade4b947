#include "netscan/api/clsNetAPI.h"

#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

constexpr std::chrono::seconds kLongestLookUp{5};

}  // namespace

clsNetAPI::clsNetAPI(QString helperProgram, Tell tell)
    : helperProgram_(std::move(helperProgram)), tell_(std::move(tell)) {}

QString clsNetAPI::EnumerateServers(qint32 filter) const {
  ScanSetup setup = ScanSetup::OfThisMachine();
  setup.openEcho = [program = helperProgram_] { return OpenEchoChannel(program); };
  return EnumerateServers(filter, std::move(setup));
}

QString clsNetAPI::EnumerateServers(qint32 filter, ScanSetup setup) const {
  setup.echoFound = false;  // whoever announces himself is listed, whether he answers an echo or not
  HostScan scan(std::move(setup));
  scan.Start();
  std::vector<MachineRecord> machines;
  for (const FoundHost& host : scan.Result().hosts) machines.push_back(host.machine);
  return ServerListText(machines, static_cast<quint32>(filter));
}

// The sockets of this platform need no start and no end, have no version and no least number: of the messages on the
// sockets library only the one on a failed look-up has a cause here.
QString clsNetAPI::GetIPAddress(const QString& name) const {
  NameLookUp lookUp;
  lookUp.AskName(name);
  const auto answers = lookUp.Await(kLongestLookUp);
  const auto found = answers.addresses.find(name);
  if (found != answers.addresses.end()) return AddressText(found->second);
  if (tell_)
    tell_(QStringLiteral("Windows Sockets are not responding. ") +
          QStringLiteral("Unable to successfully get Host Name."));
  return {};
}

qint32 clsNetAPI::Ping(const QString& ipAddress) const {
  const auto address = EchoAddress(ipAddress);
  if (!address) return -1;
  const auto channel = OpenEchoChannel(helperProgram_);
  if (!channel) return 0;
  return static_cast<qint32>(EchoSession(*channel).Ask(*address).status);
}

}  // namespace quarl::netscan
