#include <arpa/inet.h>

#include <QRandomGenerator>
#include <QSet>
#include <map>
#include <unordered_map>

#include "netscan/api/AnswerTime.h"
#include "netscan/api/Datagrams.h"
#include "netscan/api/DnsPacket.h"
#include "netscan/api/HostName.h"
#include "netscan/api/HostSources.h"

namespace quarl::netscan {
namespace {

constexpr std::size_t kQuestionsAtOnce = 20;  // fit in one packet of any link
constexpr qsizetype kMostQuestions = 6000;
constexpr int kMostFollowed = 200;                        // questions that the answers of one machine lead to
constexpr auto kRepeat = std::chrono::milliseconds(200);  // radio links lose packets to groups
const QString kReverse = QStringLiteral(".in-addr.arpa");
const QString kServiceTypes = QStringLiteral("_services._dns-sd._udp.local");

QString ReverseName(in_addr_t address) {
  return AddressText(htonl(__builtin_bswap32(ntohl(address)))) + kReverse;
}

in_addr_t AddressOfReverseName(const QString& name) {
  in_addr address{};
  const QByteArray text = name.chopped(kReverse.size()).toLatin1();
  return inet_pton(AF_INET, text.constData(), &address) == 1 ? __builtin_bswap32(address.s_addr) : 0;
}

class MdnsSource final : public HostSource {
 public:
  void Start(SourceHost& host) override;
  void Seen(in_addr_t address) override { Ask({ReverseName(address), DnsType::Ptr}); }
  bool Done() const override { return time_.Over(); }

 private:
  void Ask(const DnsQuestion& question);
  void SendQuestions();
  void SendToAll(const ByteVector& packet);
  void Take(Bytes packet, in_addr_t sender);
  void Follow(const DnsRecord& record, const QSet<QString>& described, in_addr_t sender);
  void Tell(const QString& target, in_addr_t address);

  SourceHost* host_ = nullptr;
  std::uint16_t id_ = 0;
  std::unique_ptr<Datagrams> socket_;
  std::vector<DnsQuestion> waiting_;
  QSet<QString> asked_;
  std::unordered_map<in_addr_t, int> followed_;  ///< questions by the machine that led to them
  AnswerTime time_;
};

void MdnsSource::Start(SourceHost& host) {
  host_ = &host;
  id_ = static_cast<std::uint16_t>(QRandomGenerator::system()->generate() & 0xffff);
  socket_ = Datagrams::Open(host.Loop(), 0, [this](Bytes packet, in_addr_t sender) { Take(packet, sender); });
  if (!socket_) return host.Note(QStringLiteral("Multicast names could not be asked for."));
  Ask({kServiceTypes, DnsType::Ptr});
  for (const char* service : {"_workstation", "_smb", "_ssh", "_sftp-ssh", "_device-info", "_http", "_rfb", "_ipp"})
    Ask({QLatin1String(service) + QStringLiteral("._tcp.local"), DnsType::Ptr});
}

// Each question once; those of one turn of the loop go together.
void MdnsSource::Ask(const DnsQuestion& question) {
  if (!socket_ || asked_.size() >= kMostQuestions || asked_.contains(question.name)) return;
  asked_.insert(question.name);
  if (waiting_.empty()) host_->Loop().After({}, [this] { SendQuestions(); });
  waiting_.push_back(question);
  time_.Asked(host_->Loop(), host_->Bounds().source);
}

void MdnsSource::SendQuestions() {
  const auto questions = std::exchange(waiting_, {});
  for (std::size_t from = 0; from < questions.size(); from += kQuestionsAtOnce) {
    const auto end =
        questions.begin() + static_cast<std::ptrdiff_t>(std::min(questions.size(), from + kQuestionsAtOnce));
    const auto packet = DnsQuery(id_, {questions.begin() + static_cast<std::ptrdiff_t>(from), end});
    if (!packet) continue;
    SendToAll(*packet);
    host_->Loop().After(kRepeat, [this, again = *packet] { SendToAll(again); });
  }
}

void MdnsSource::SendToAll(const ByteVector& packet) {
  for (const Subnet& subnet : host_->Subnets())
    std::ignore = socket_->SendToGroup(packet, htonl(0xe00000fb), host_->Ports().multicastNames, subnet.own);
}

void MdnsSource::Take(Bytes packet, in_addr_t sender) {
  const auto records = ReadDnsResponse(packet);
  std::map<QString, in_addr_t> addresses;
  QSet<QString> described;
  for (const DnsRecord& record : records) {
    if (record.type == DnsType::A && host_->IsAttached(record.address))
      addresses.emplace(record.owner.toLower(), record.address);
    if (record.type == DnsType::Srv) described.insert(record.owner);
  }
  for (const DnsRecord& record : records) {
    if (record.type == DnsType::Ptr) Follow(record, described, sender);
    if (record.type != DnsType::Srv) continue;
    const auto address = addresses.find(record.target.toLower());
    Tell(record.target, address == addresses.end() ? sender : address->second);
  }
  for (const auto& [name, address] : addresses) Tell(name, address);
}

void MdnsSource::Follow(const DnsRecord& record, const QSet<QString>& described, in_addr_t sender) {
  if (record.owner.endsWith(kReverse)) return Tell(record.target, AddressOfReverseName(record.owner));
  const bool service = record.owner == kServiceTypes;
  if (!service && described.contains(record.target)) return;
  if (asked_.contains(record.target) || ++followed_[sender] > kMostFollowed) return;
  Ask({record.target, service ? DnsType::Ptr : DnsType::Srv});
}

void MdnsSource::Tell(const QString& target, in_addr_t address) {
  Sighting sighting;
  sighting.source = QStringLiteral("mDNS");
  sighting.address = address;
  sighting.name = WithoutLocalDomain(target);
  sighting.nameKind = NameKind::Service;
  if (address != 0 && !sighting.name.isEmpty()) host_->Report(sighting);
}

}  // namespace

std::unique_ptr<HostSource> MakeMdnsSource() {
  return std::make_unique<MdnsSource>();
}

}  // namespace quarl::netscan
