#include "transfer/ConfigurationMerge.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <unordered_map>

#include "transfer/TransferError.h"

namespace quarl::transfer {
namespace {

using store::AlertConfiguration;
using store::Configuration;
using store::GroupConfiguration;
using store::ServerConfiguration;
using store::TestConfiguration;
using store::TypeConfiguration;

/// The types after the import, and the id there of each type of the file.
struct PlannedTypes {
  std::vector<TypeConfiguration> types;
  std::map<qint32, qint32> ids;
};

qint32 FreeId(const std::set<qint32>& taken) {
  if (taken.empty() || *taken.rbegin() < 0) return 1;
  if (*taken.rbegin() < std::numeric_limits<qint32>::max()) return *taken.rbegin() + 1;
  qint32 free = 1;
  while (taken.contains(free)) ++free;
  return free;
}

/// The name that a type gets which the file knows by its module only.
QString BaseName(const QString& module) {
  const qsizetype dot = module.lastIndexOf(QLatin1Char('.'));
  return dot > 0 ? module.left(dot) : module;
}

const TypeConfiguration* FindModule(const std::vector<TypeConfiguration>& types, const QString& module) {
  const auto found = std::find_if(types.begin(), types.end(), [&](const auto& type) {
    return type.module.compare(module, Qt::CaseInsensitive) == 0;
  });
  return found == types.end() ? nullptr : &*found;
}

template <typename Record>
auto FindId(std::vector<Record>& list, qint32 id) {
  return std::find_if(list.begin(), list.end(), [&](const auto& record) { return record.id == id; });
}

bool HasId(const std::vector<TypeConfiguration>& types, qint32 id) {
  return std::any_of(types.begin(), types.end(), [&](const auto& type) { return type.id == id; });
}

PlannedTypes PlanTypes(const std::vector<TypeConfiguration>& file, const std::vector<TypeConfiguration>& known,
                       ImportMode mode) {
  const bool merge = mode == ImportMode::Merge;
  PlannedTypes plan;
  if (merge) plan.types = known;
  std::set<qint32> taken;
  for (const TypeConfiguration& type : known) taken.insert(type.id);
  for (const TypeConfiguration& type : file) taken.insert(type.id);
  for (const TypeConfiguration& type : file) {
    const TypeConfiguration* same = FindModule(known, type.module);
    TypeConfiguration planned = type;
    if (same != nullptr && (merge || (type.id < 0 && !HasId(file, same->id)))) {
      planned.id = same->id;
    } else if (type.id < 0 || (merge && HasId(known, type.id))) {
      planned.id = FreeId(taken);
    }
    if (type.id < 0 && type.name.isEmpty()) planned.name = same != nullptr ? same->name : BaseName(type.module);
    plan.ids[type.id] = planned.id;
    taken.insert(planned.id);
    if (const auto held = FindId(plan.types, planned.id); held != plan.types.end()) {
      *held = planned;
    } else {
      plan.types.push_back(planned);
    }
  }
  return plan;
}

/// Gives every test and alert of the file the id that its type has after the import.
void RenumberTypes(Configuration& file, const PlannedTypes& testTypes, const PlannedTypes& alertTypes) {
  const auto alerts = [&](std::vector<AlertConfiguration>& list) {
    for (AlertConfiguration& alert : list) alert.idAlertType = alertTypes.ids.at(alert.idAlertType);
  };
  const auto group = [&](GroupConfiguration& each) {
    alerts(each.alerts);
    for (ServerConfiguration& server : each.servers) {
      alerts(server.alerts);
      for (TestConfiguration& test : server.tests) test.idTestType = testTypes.ids.at(test.idTestType);
    }
  };
  group(file.root);
  for (GroupConfiguration& each : file.groups) group(each);
}

/// Brings the groups of a file into those of a store. The store's records are taken apart into flat lists, so that
/// each is found by its id at once wherever the file puts it.
class Merger {
 public:
  explicit Merger(const Configuration& target);
  void MergeRoot(const GroupConfiguration& root) { MergeInto(0, root); }
  void MergeGroup(const GroupConfiguration& group) { MergeInto(GroupFor(group), group); }
  /// Puts the records together again; the object is used up.
  void Build(Configuration& result);

 private:
  struct PlacedServer {
    ServerConfiguration server;
    std::size_t group = 0;
  };
  void MergeInto(std::size_t index, const GroupConfiguration& incoming);
  std::size_t GroupFor(const GroupConfiguration& group);
  std::size_t ServerFor(const ServerConfiguration& server, std::size_t group);
  void MergeServer(const ServerConfiguration& server, std::size_t group);
  void MergeAlerts(const std::vector<AlertConfiguration>& incoming, std::vector<AlertConfiguration>& alerts,
                   std::size_t owner);
  std::vector<AlertConfiguration>& AlertsOf(std::size_t owner);

  // Owners of alerts are numbered together: groups even, servers odd.
  static std::size_t GroupOwner(std::size_t group) { return 2 * group; }
  static std::size_t ServerOwner(std::size_t server) { return 2 * server + 1; }

  std::vector<GroupConfiguration> groups_;  // the first is the root group; their servers are in servers_
  std::vector<PlacedServer> servers_;
  std::unordered_map<qint32, std::size_t> groupOfId_, serverOfId_;
  std::unordered_map<qint32, std::size_t> ownerOfTest_, ownerOfAlert_;
};

Merger::Merger(const Configuration& target) {
  groups_.push_back(target.root);
  groups_.insert(groups_.end(), target.groups.begin(), target.groups.end());
  for (std::size_t group = 0; group < groups_.size(); ++group) {
    groupOfId_[groups_[group].id] = group;
    for (const AlertConfiguration& alert : groups_[group].alerts) ownerOfAlert_[alert.id] = GroupOwner(group);
    for (ServerConfiguration& server : groups_[group].servers) {
      const std::size_t index = servers_.size();
      serverOfId_[server.id] = index;
      for (const TestConfiguration& test : server.tests) ownerOfTest_[test.id] = index;
      for (const AlertConfiguration& alert : server.alerts) ownerOfAlert_[alert.id] = ServerOwner(index);
      servers_.push_back({std::move(server), group});
    }
    groups_[group].servers.clear();
  }
}

std::size_t Merger::GroupFor(const GroupConfiguration& group) {
  if (group.id != 0 && serverOfId_.contains(group.id)) {
    throw TransferError(QStringLiteral("The id %1 is a group in the file and a server in the store.").arg(group.id));
  }
  const auto found = groupOfId_.find(group.id);
  if (group.id != 0 && found != groupOfId_.end()) return found->second;
  groups_.push_back({group.id, {}, {}, {}, {}, {}});
  return groups_.size() - 1;
}

std::size_t Merger::ServerFor(const ServerConfiguration& server, std::size_t group) {
  if (server.id != 0 && groupOfId_.contains(server.id)) {
    throw TransferError(QStringLiteral("The id %1 is a server in the file and a group in the store.").arg(server.id));
  }
  if (const auto found = serverOfId_.find(server.id); found != serverOfId_.end()) return found->second;
  servers_.push_back({{server.id, {}, {}, {}, {}, {}, {}}, group});
  return servers_.size() - 1;
}

std::vector<AlertConfiguration>& Merger::AlertsOf(std::size_t owner) {
  return owner % 2 == 0 ? groups_[owner / 2].alerts : servers_[owner / 2].server.alerts;
}

void Merger::MergeAlerts(const std::vector<AlertConfiguration>& incoming, std::vector<AlertConfiguration>& alerts,
                         std::size_t owner) {
  for (const AlertConfiguration& alert : incoming) {
    const auto known = ownerOfAlert_.find(alert.id);
    if (known == ownerOfAlert_.end()) {
      alerts.push_back(alert);
    } else if (known->second == owner) {
      *FindId(alerts, alert.id) = alert;
    } else {
      std::erase_if(AlertsOf(known->second), [&](const auto& other) { return other.id == alert.id; });
      alerts.push_back(alert);
      known->second = owner;
    }
  }
}

void Merger::MergeServer(const ServerConfiguration& incoming, std::size_t group) {
  const std::size_t index = ServerFor(incoming, group);
  servers_[index].group = group;
  ServerConfiguration& server = servers_[index].server;
  server.name = incoming.name;
  server.ipAddress = incoming.ipAddress;
  if (incoming.failThreshold) server.failThreshold = incoming.failThreshold;
  if (incoming.schedule) server.schedule = incoming.schedule;
  for (const TestConfiguration& test : incoming.tests) {
    const auto known = ownerOfTest_.find(test.id);
    if (known == ownerOfTest_.end()) {
      server.tests.push_back(test);
    } else if (known->second == index) {
      *FindId(server.tests, test.id) = test;
    } else {
      std::erase_if(servers_[known->second].server.tests, [&](const auto& other) { return other.id == test.id; });
      server.tests.push_back(test);
      known->second = index;
    }
  }
  MergeAlerts(incoming.alerts, server.alerts, ServerOwner(index));
}

void Merger::MergeInto(std::size_t index, const GroupConfiguration& incoming) {
  GroupConfiguration& group = groups_[index];
  group.name = incoming.name;
  group.description = incoming.description;
  if (incoming.schedule) group.schedule = incoming.schedule;
  MergeAlerts(incoming.alerts, group.alerts, GroupOwner(index));
  for (const ServerConfiguration& server : incoming.servers) MergeServer(server, index);
}

void Merger::Build(Configuration& result) {
  for (PlacedServer& placed : servers_) groups_[placed.group].servers.push_back(std::move(placed.server));
  result.root = std::move(groups_.front());
  result.groups.assign(std::make_move_iterator(groups_.begin() + 1), std::make_move_iterator(groups_.end()));
}

}  // namespace

bool IsEmpty(const Configuration& configuration) {
  return configuration.testTypes.empty() && configuration.alertTypes.empty() && configuration.groups.empty() &&
         configuration.root.servers.empty() && configuration.root.alerts.empty();
}

Configuration PlanImport(const ConfigurationFile& file, const store::ConfigurationSnapshot& target, ImportMode mode) {
  const Configuration& known = target.configuration;
  const bool foreign = !file.storeId.isEmpty() && file.storeId != target.storeId;
  if (mode == ImportMode::Merge && foreign && !IsEmpty(known)) {
    throw TransferError(QStringLiteral("The file is of another store, so its ids mean other records here."));
  }
  const PlannedTypes testTypes = PlanTypes(file.configuration.testTypes, known.testTypes, mode);
  const PlannedTypes alertTypes = PlanTypes(file.configuration.alertTypes, known.alertTypes, mode);
  Configuration incoming = file.configuration;
  RenumberTypes(incoming, testTypes, alertTypes);
  Configuration result;
  if (mode == ImportMode::Replace) {
    result = std::move(incoming);
  } else {
    Merger merger(known);
    merger.MergeRoot(incoming.root);
    for (const GroupConfiguration& group : incoming.groups) merger.MergeGroup(group);
    merger.Build(result);
  }
  result.testTypes = testTypes.types;
  result.alertTypes = alertTypes.types;
  return result;
}

}  // namespace quarl::transfer
