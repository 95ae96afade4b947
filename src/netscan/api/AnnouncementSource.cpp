#include <arpa/inet.h>

#include <QRandomGenerator>
#include <cerrno>
#include <cstring>

#include "netscan/api/AnswerTime.h"
#include "netscan/api/Datagrams.h"
#include "netscan/api/HostName.h"
#include "netscan/api/HostSources.h"
#include "netscan/api/NetBiosPacket.h"

namespace quarl::netscan {
namespace {

const QByteArray kOwnName = QByteArrayLiteral("QUARL");
constexpr quint32 kNtTypes = 0x1000 | kNtServerType;  // workstation or server of the NT family

quint32 PlatformOf(quint32 type) {
  return (type & kDosWindowsType) != 0 && (type & kNtTypes) == 0 ? kDosPlatform : kNtPlatform;
}

class AnnouncementSource final : public HostSource {
 public:
  void Start(SourceHost& host) override {
    host_ = &host;
    const in_port_t port = host.Ports().datagram;
    socket_ = Datagrams::Open(host.Loop(), port, [this](Bytes packet, in_addr_t sender) { Take(packet, sender); });
    if (!socket_)
      host.Note(QStringLiteral("Announcements of machines could not be heard: UDP port %1: %2.")
                    .arg(port)
                    .arg(QString::fromLocal8Bit(std::strerror(errno))));
  }
  void SeenWorkgroup(const QString& workgroup) override {
    if (!socket_) return;
    const auto id = static_cast<std::uint16_t>(QRandomGenerator::system()->generate() & 0xffff);
    for (const Subnet& subnet : host_->Subnets())
      std::ignore = socket_->Send(AnnouncementRequest(id, ntohl(subnet.own), kOwnName, workgroup.toLatin1()),
                                  subnet.broadcast, host_->Ports().datagram);
    time_.Asked(host_->Loop(), host_->Bounds().source);
  }
  bool Done() const override { return time_.Over(); }

 private:
  void Take(Bytes packet, in_addr_t sender) {
    const auto announcement = ReadAnnouncement(packet);
    if (!announcement) return;
    Sighting sighting;
    sighting.source = QStringLiteral("announcement");
    sighting.address = sender;
    sighting.name = announcement->name;
    sighting.nameKind = NameKind::Computer;
    sighting.version = {announcement->major, announcement->minor, 0};
    sighting.type = announcement->type;
    sighting.platform = PlatformOf(announcement->type);
    sighting.detail = QStringLiteral("%1.%2, type %3")
                          .arg(announcement->major)
                          .arg(announcement->minor)
                          .arg(announcement->type, 0, 16);
    host_->Report(sighting);
  }

  SourceHost* host_ = nullptr;
  std::unique_ptr<Datagrams> socket_;
  AnswerTime time_;
};

}  // namespace

std::unique_ptr<HostSource> MakeAnnouncementSource() {
  return std::make_unique<AnnouncementSource>();
}

}  // namespace quarl::netscan
