#include <QRandomGenerator>
#include <unordered_set>

#include "netscan/api/AnswerTime.h"
#include "netscan/api/Datagrams.h"
#include "netscan/api/HostName.h"
#include "netscan/api/HostSources.h"
#include "netscan/api/NetBiosPacket.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;

// Questions to neighbours that do not exist stay in a socket's send buffer for seconds, so each window has a socket.
constexpr std::size_t kWindow = 254;
constexpr auto kBetweenWindows = 60ms;
constexpr auto kBusyPause = 20ms;

class NetBiosSource final : public HostSource {
 public:
  void Start(SourceHost& host) override;
  void Seen(in_addr_t address) override;
  bool Done() const override { return probed_ >= host_->Addresses().size() && time_.Over(); }
  std::optional<std::size_t> Probed() const override { return probed_; }

 private:
  std::unique_ptr<Datagrams> OpenSocket();
  void SendWindow();
  void Take(Bytes packet, in_addr_t sender);

  SourceHost* host_ = nullptr;
  std::uint16_t id_ = 0;
  std::unique_ptr<Datagrams> main_;
  std::vector<std::unique_ptr<Datagrams>> windows_;
  std::size_t probed_ = 0;
  AnswerTime time_;
  std::unordered_set<in_addr_t> answered_;
};

void NetBiosSource::Start(SourceHost& host) {
  host_ = &host;
  id_ = static_cast<std::uint16_t>(QRandomGenerator::system()->generate() & 0xffff);
  main_ = OpenSocket();
  if (!main_) {
    host.Note(QStringLiteral("NetBIOS names could not be asked for."));
    probed_ = host.Addresses().size();
    return;
  }
  for (const Subnet& subnet : host.Subnets())
    std::ignore = main_->Send(NodeStatusRequest(id_, true), subnet.broadcast, host.Ports().nameService);
  time_.Asked(host.Loop(), host.Bounds().source);
  SendWindow();
}

std::unique_ptr<Datagrams> NetBiosSource::OpenSocket() {
  return Datagrams::Open(host_->Loop(), 0, [this](Bytes packet, in_addr_t sender) { Take(packet, sender); });
}

void NetBiosSource::SendWindow() {
  const auto& addresses = host_->Addresses();
  if (probed_ >= addresses.size()) return;
  if (windows_.size() <= probed_ / kWindow) windows_.push_back(OpenSocket());
  const std::size_t end = std::min(addresses.size(), (probed_ / kWindow + 1) * kWindow);
  const ByteVector request = NodeStatusRequest(id_, false);
  while (probed_ < end) {
    if (windows_.back() && !windows_.back()->Send(request, addresses[probed_], host_->Ports().nameService)) break;
    ++probed_;
  }
  time_.Asked(host_->Loop(), host_->Bounds().source);
  host_->Loop().After(probed_ < end ? kBusyPause : kBetweenWindows, [this] { SendWindow(); });
}

// A second question to those who are there but have not answered: one packet is soon lost.
void NetBiosSource::Seen(in_addr_t address) {
  if (!main_ || answered_.contains(address)) return;
  std::ignore = main_->Send(NodeStatusRequest(id_, false), address, host_->Ports().nameService);
  time_.Asked(host_->Loop(), host_->Bounds().source);
}

void NetBiosSource::Take(Bytes packet, in_addr_t sender) {
  const auto status = ReadNodeStatus(packet, id_);
  if (!status || !answered_.insert(sender).second) return;
  Sighting sighting;
  sighting.source = QStringLiteral("NetBIOS");
  sighting.address = sender;
  sighting.name = status->name;
  sighting.nameKind = NameKind::Computer;
  sighting.workgroup = status->workgroup;
  sighting.type = status->type;
  if (!status->workgroup.isEmpty()) sighting.detail = QStringLiteral("workgroup %1").arg(CleanName(status->workgroup));
  host_->Report(sighting);
}

}  // namespace

std::unique_ptr<HostSource> MakeNetBiosSource() {
  return std::make_unique<NetBiosSource>();
}

}  // namespace quarl::netscan
