#include "netscan/api/HostMerge.h"

#include <arpa/inet.h>

#include <QMap>
#include <algorithm>
#include <map>
#include <tuple>

#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

constexpr qsizetype kMostOthers = 8;  // addresses of a machine that its finding names besides the chosen one

struct Draft {
  std::vector<const Sighting*> sightings;
  QString name;
  NameKind nameKind = NameKind::None;
  std::map<quint32, bool> addresses;  ///< host byte order; whether it answered the echo
};

// The better of two names: of the better kind, then the first in order, which of two spellings is the upper-case one.
bool IsBetter(NameKind kind, const QString& name, const Draft& draft) {
  if (name.isEmpty() || kind == NameKind::None) return false;
  return draft.name.isEmpty() || kind > draft.nameKind || (kind == draft.nameKind && name < draft.name);
}

// NetBIOS names end after 15 characters; another source may know the rest.
void Lengthen(Draft& draft) {
  if (draft.name.size() != 15) return;
  const QString cut = draft.name;
  for (const Sighting* sighting : draft.sightings) {
    const QString name = CleanName(sighting->name);
    const bool longer = name.size() > draft.name.size() && !name.contains(QLatin1Char('.'));
    if (longer && name.startsWith(cut, Qt::CaseInsensitive)) draft.name = name;
  }
}

void Add(Draft& draft, const Sighting& sighting) {
  draft.sightings.push_back(&sighting);
  if (sighting.address != 0) draft.addresses[ntohl(sighting.address)] |= sighting.echo == EchoStatus::Answered;
  const QString name = CleanName(sighting.name);
  if (!IsBetter(sighting.nameKind, name, draft)) return;
  draft.name = name;
  draft.nameKind = sighting.nameKind;
}

// Two machines may have the same looked-up or device name, but not the same name among computers.
bool IsUnique(const Draft& draft) {
  return draft.nameKind >= NameKind::Service;
}

std::vector<Draft> DraftsByName(const std::map<quint32, Draft>& byAddress,
                                const std::vector<const Sighting*>& nowhere) {
  std::vector<Draft> drafts;
  QMap<QString, std::size_t> places;
  const auto place = [&](Draft draft) {
    Lengthen(draft);
    const QString key = draft.name.toCaseFolded();
    if (!IsUnique(draft) || !places.contains(key)) {
      if (IsUnique(draft)) places[key] = drafts.size();
      drafts.push_back(std::move(draft));
      return;
    }
    Draft& same = drafts[places[key]];
    for (const Sighting* sighting : draft.sightings) Add(same, *sighting);
  };
  for (const auto& [address, draft] : byAddress) place(draft);
  for (const Sighting* sighting : nowhere) {
    Draft draft;
    Add(draft, *sighting);
    if (!draft.name.isEmpty()) place(std::move(draft));
  }
  for (Draft& draft : drafts) Lengthen(draft);
  return drafts;
}

quint32 ChosenAddress(const Draft& draft) {
  const auto answered =
      std::find_if(draft.addresses.begin(), draft.addresses.end(), [](const auto& entry) { return entry.second; });
  if (answered != draft.addresses.end()) return answered->first;
  return draft.addresses.empty() ? 0 : draft.addresses.begin()->first;
}

// The version with the highest build is the exact one; what came in first does not matter.
MachineRecord RecordOf(const Draft& draft) {
  MachineRecord record;
  record.name = draft.name;
  std::optional<quint32> platform;
  std::tuple<qint32, qint32, qint32> best{-1, 0, 0};
  for (const Sighting* sighting : draft.sightings) {
    record.type |= sighting->type;
    platform = std::max(platform, sighting->platform);
    if (const auto& version = sighting->version)
      best = std::max(best, {version->build, version->major, version->minor});
  }
  record.platform = platform.value_or(record.platform);
  std::tie(std::ignore, record.major, record.minor) = best;
  return record;
}

QString FindingOf(const Draft& draft, quint32 chosen) {
  QMap<QString, QStringList> details;
  for (const Sighting* sighting : draft.sightings) {
    QStringList& known = details[sighting->source];
    if (!sighting->detail.isEmpty() && !known.contains(sighting->detail)) known += sighting->detail;
  }
  QStringList parts;
  for (auto entry = details.begin(); entry != details.end(); ++entry) {
    entry.value().sort();
    const QString detail = entry.value().join(QStringLiteral("; "));
    parts += detail.isEmpty() ? entry.key() : QStringLiteral("%1 (%2)").arg(entry.key(), detail);
  }
  QStringList others;
  for (const auto& [address, answered] : draft.addresses) {
    if (address == chosen) continue;
    others += others.size() < kMostOthers ? AddressText(htonl(address)) : QStringLiteral("...");
    if (others.size() > kMostOthers) break;
  }
  QString text = QStringLiteral("Seen by ") + parts.join(QStringLiteral(", "));
  if (!others.isEmpty()) text += QStringLiteral("; also at ") + others.join(QStringLiteral(", "));
  return text;
}

bool ComesBefore(const FoundHost& a, const FoundHost& b) {
  const int byName = a.machine.name.compare(b.machine.name, Qt::CaseInsensitive);
  if (byName != 0) return byName < 0;
  return std::tie(a.machine.name, a.address) < std::tie(b.machine.name, b.address);
}

}  // namespace

std::vector<MergedHost> MergeSightings(std::span<const Sighting> sightings) {
  std::map<quint32, Draft> byAddress;
  std::vector<const Sighting*> nowhere;
  for (const Sighting& sighting : sightings) {
    if (sighting.address != 0)
      Add(byAddress[ntohl(sighting.address)], sighting);
    else
      nowhere.push_back(&sighting);
  }
  std::vector<MergedHost> merged;
  for (const Draft& draft : DraftsByName(byAddress, nowhere)) {
    const quint32 chosen = ChosenAddress(draft);
    const auto address = draft.addresses.find(chosen);
    MergedHost host{htonl(chosen), RecordOf(draft), {}, FindingOf(draft, chosen)};
    if (address != draft.addresses.end() && address->second) host.echo = EchoStatus::Answered;
    merged.push_back(std::move(host));
  }
  return merged;
}

std::vector<FoundHost> ListHosts(std::vector<MergedHost> merged) {
  std::vector<FoundHost> hosts;
  for (MergedHost& host : merged) {
    FoundHost found{std::move(host.machine), {}, AddressText(host.address), host.echo, Unlisted::No,
                    std::move(host.finding)};
    if (found.machine.name.isEmpty()) found.machine.name = found.address;
    if (found.address.isEmpty())
      found.unlisted = Unlisted::NoAddress;
    else if (found.echo && *found.echo != EchoStatus::Answered)
      found.unlisted = Unlisted::NoEcho;
    hosts.push_back(std::move(found));
  }
  std::sort(hosts.begin(), hosts.end(), ComesBefore);
  std::vector<MachineRecord> machines;
  machines.reserve(hosts.size());
  for (const FoundHost& host : hosts) machines.push_back(host.machine);
  const auto labels = LabelMachines(machines);
  for (std::size_t index = 0; index < hosts.size(); ++index) hosts[index].label = labels[index];
  return hosts;
}

}  // namespace quarl::netscan
