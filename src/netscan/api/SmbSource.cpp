
#include <algorithm>

#include "netscan/api/HostSources.h"
#include "netscan/api/SmbPacket.h"
#include "netscan/api/TcpTalks.h"

namespace quarl::netscan {
namespace {

// Builds that exist for servers only. The others are shared with workstations and say nothing.
constexpr std::uint16_t kServerBuilds[] = {20348, 25398};

quint32 TypeOf(const SmbChallenge& challenge) {
  const bool server = challenge.major == 10 && std::find(std::begin(kServerBuilds), std::end(kServerBuilds),
                                                         challenge.build) != std::end(kServerBuilds);
  return kServesFiles | (server ? kNtServerType : 0);
}

class SmbSource final : public HostSource {
 public:
  void Start(SourceHost& host) override {
    host_ = &host;
    talks_.emplace(host.Loop(), TcpTalks::Limits{host.Bounds().connection, host.Bounds().connectionsAtOnce});
  }
  void Seen(in_addr_t address) override {
    talks_->Begin(
        address, host_->Ports().files, SmbNegotiate(),
        [this, address, negotiated = false](Bytes received, bool) mutable {
          return Hear(address, received, negotiated);
        },
        [this, address] { Refused(address); });
  }
  bool Done() const override { return talks_->Idle(); }

 private:
  TcpTalks::Next Hear(in_addr_t address, Bytes received, bool& negotiated) {
    const SmbMessage message = FirstSmbMessage(received);
    if (message.hostile) return {};
    if (!message.content) return TcpTalks::Next::Wait();
    if (!negotiated) {
      negotiated = IsSmbNegotiated(*message.content);
      return negotiated ? TcpTalks::Next::Say(SmbSessionSetup()) : TcpTalks::Next{};
    }
    Describe(address, ReadSmbChallenge(*message.content).value_or(SmbChallenge{}));
    return {};
  }

  // A refusal, too, shows that a machine is there.
  void Refused(in_addr_t address) {
    Sighting sighting;
    sighting.source = QStringLiteral("TCP");
    sighting.address = address;
    sighting.detail = QStringLiteral("serves no files");
    host_->Report(sighting);
  }

  void Describe(in_addr_t address, const SmbChallenge& challenge) {
    Sighting sighting;
    sighting.source = QStringLiteral("SMB");
    sighting.address = address;
    // Fifteen characters are all that the short name can have; then the long one may have more.
    const QString longName = challenge.dnsComputer.section(QLatin1Char('.'), 0, 0);
    const bool cut = challenge.computer.size() == 15 && longName.startsWith(challenge.computer, Qt::CaseInsensitive);
    sighting.name = cut ? longName : challenge.computer;
    sighting.nameKind = NameKind::Computer;
    sighting.workgroup = challenge.domain;
    sighting.type = TypeOf(challenge);
    if (challenge.hasVersion) {
      sighting.version = {challenge.major, challenge.minor, challenge.build};
      sighting.detail = QStringLiteral("%1.%2 build %3").arg(challenge.major).arg(challenge.minor).arg(challenge.build);
    }
    host_->Report(sighting);
  }

  SourceHost* host_ = nullptr;
  std::optional<TcpTalks> talks_;
};

}  // namespace

std::unique_ptr<HostSource> MakeSmbSource() {
  return std::make_unique<SmbSource>();
}

}  // namespace quarl::netscan
