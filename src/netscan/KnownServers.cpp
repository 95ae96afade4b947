#include "netscan/KnownServers.h"

#include "base/NullToEmpty.h"

namespace quarl::netscan {
namespace {

QString Sentence(const QString& name, const QString& address, const QVariant& group) {
  const QString place = group.isValid() ? QStringLiteral("in the group \"%1\"").arg(group.toString())
                                        : QStringLiteral("outside the groups");
  return QStringLiteral("Already in the store: %1 (%2), %3.").arg(name, address, place);
}

}  // namespace

KnownServers::KnownServers(store::Stores& stores) {
  for (store::RecordSet servers = stores.Servers().GetAllServers(0); !servers.Eof(); servers.MoveNext()) {
    const QString name = NullToEmpty(servers.Value("ServerName")).toString();
    const QString address = NullToEmpty(servers.Value("ServerIP")).toString();
    const QString sentence = Sentence(name, address, servers.Value("GroupName"));
    byAddress_.insert(address, sentence);
    byName_.insert(name.toCaseFolded(), sentence);
  }
}

QString KnownServers::NoteOn(const FoundHost& host) const {
  const auto known = byAddress_.constFind(host.address);
  return known != byAddress_.constEnd() ? *known : byName_.value(host.machine.name.toCaseFolded());
}

}  // namespace quarl::netscan
