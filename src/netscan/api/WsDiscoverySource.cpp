#include <arpa/inet.h>

#include <QSet>
#include <QUuid>
#include <unordered_map>

#include "netscan/api/AnswerTime.h"
#include "netscan/api/Datagrams.h"
#include "netscan/api/HostName.h"
#include "netscan/api/HostSources.h"
#include "netscan/api/TcpTalks.h"
#include "netscan/api/WsDiscoveryMessage.h"

namespace quarl::netscan {
namespace {

constexpr auto kRepeat = std::chrono::milliseconds(200);  // radio links lose packets to groups
constexpr int kMostOfOne = 8;                             // questions to one machine
constexpr qsizetype kMostQuestions = 1000;                // of all

QString NewId() {
  return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

Bytes BytesOf(const QByteArray& array) {
  return {reinterpret_cast<const std::uint8_t*>(array.data()), static_cast<std::size_t>(array.size())};
}

QByteArray ArrayOf(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

class WsDiscoverySource final : public HostSource {
 public:
  void Start(SourceHost& host) override;
  bool Done() const override { return time_.Over() && talks_->Idle(); }

 private:
  void AskEverybody(const QByteArray& message);
  bool MayAsk(in_addr_t address, const QString& what);
  void Take(Bytes packet, in_addr_t sender);
  void GetDescription(const WsMatch& match, in_addr_t address);
  void Tell(in_addr_t address, const WsDescription& description);

  SourceHost* host_ = nullptr;
  std::unique_ptr<Datagrams> socket_;
  std::optional<TcpTalks> talks_;
  QSet<QString> asked_;
  std::unordered_map<in_addr_t, int> questions_;  ///< that the answers of each machine led to
  AnswerTime time_;
};

void WsDiscoverySource::Start(SourceHost& host) {
  host_ = &host;
  talks_.emplace(host.Loop(), TcpTalks::Limits{host.Bounds().connection, host.Bounds().connectionsAtOnce});
  socket_ = Datagrams::Open(host.Loop(), 0, [this](Bytes packet, in_addr_t sender) { Take(packet, sender); });
  if (!socket_) return host.Note(QStringLiteral("WS-Discovery could not be asked."));
  const QByteArray probe = WsProbe(NewId());
  AskEverybody(probe);
  host.Loop().After(kRepeat, [this, probe] { AskEverybody(probe); });
}

void WsDiscoverySource::AskEverybody(const QByteArray& message) {
  for (const Subnet& subnet : host_->Subnets())
    std::ignore = socket_->SendToGroup(BytesOf(message), htonl(0xeffffffa), host_->Ports().webDiscovery, subnet.own);
  time_.Asked(host_->Loop(), host_->Bounds().source);
}

void WsDiscoverySource::Take(Bytes packet, in_addr_t sender) {
  if (host_->IsOwn(sender) || !host_->IsAttached(sender)) return;
  for (const WsMatch& match : ReadWsMatches(ArrayOf(packet))) {
    if (!match.locations.empty())
      GetDescription(match, sender);
    else if (MayAsk(sender, match.endpoint))
      AskEverybody(WsResolve(match.endpoint, NewId()));
  }
}

// Everything is asked once, and no machine uses up the questions of the others.
bool WsDiscoverySource::MayAsk(in_addr_t address, const QString& what) {
  if (what.isEmpty() || asked_.contains(what) || asked_.size() >= kMostQuestions) return false;
  if (++questions_[address] > kMostOfOne) return false;
  asked_.insert(what);
  return true;
}

// Only from the machine that answered: a location elsewhere would let it send us anywhere.
void WsDiscoverySource::GetDescription(const WsMatch& match, in_addr_t address) {
  for (const QString& text : match.locations) {
    const auto location = ReadWsLocation(text, address);
    if (!location || !MayAsk(address, text)) continue;
    const QByteArray request = WsGet(*location, address, match.endpoint, NewId());
    const Bytes bytes = BytesOf(request);
    talks_->Begin(address, location->port, {bytes.begin(), bytes.end()}, [this, address](Bytes received, bool ended) {
      const auto description = ReadWsDescription(ArrayOf(received));
      if (!description) return ended ? TcpTalks::Next{} : TcpTalks::Next::Wait();
      Tell(address, *description);
      return TcpTalks::Next{};
    });
  }
}

void WsDiscoverySource::Tell(in_addr_t address, const WsDescription& description) {
  const bool computer = !description.computer.isEmpty();
  Sighting sighting;
  sighting.source = QStringLiteral("WS-Discovery");
  sighting.address = address;
  sighting.name = computer ? description.computer : description.friendlyName;
  sighting.nameKind = computer ? NameKind::Service : NameKind::Device;
  sighting.workgroup = description.workgroup;
  if (!description.workgroup.isEmpty())
    sighting.detail = QStringLiteral("workgroup %1").arg(CleanName(description.workgroup));
  else if (computer && !description.friendlyName.isEmpty())
    sighting.detail = CleanName(description.friendlyName);
  host_->Report(sighting);
}

}  // namespace

std::unique_ptr<HostSource> MakeWsDiscoverySource() {
  return std::make_unique<WsDiscoverySource>();
}

}  // namespace quarl::netscan
