#include "service/PlanIndex.h"

#include <algorithm>

#include "service/Schedule.h"

namespace quarl::service {
namespace {

template <typename Record>
std::unordered_map<qint32, const Record*> ById(const std::vector<Record>& records) {
  std::unordered_map<qint32, const Record*> index;
  index.reserve(records.size());
  for (const Record& record : records) index.emplace(record.id, &record);
  return index;
}

template <typename Record>
const Record* Find(const std::unordered_map<qint32, const Record*>& index, qint32 id) {
  const auto at = index.find(id);
  return at == index.end() ? nullptr : at->second;
}

const ScheduleRecord* PointerTo(const std::optional<ScheduleRecord>& record) {
  return record ? &*record : nullptr;
}

}  // namespace

PlanIndex::PlanIndex(store::Plan plan)
    : plan_(std::move(plan)), tests_(ById(plan_.tests)), servers_(ById(plan_.servers)) {
  for (const store::PlannedAlert& alert : plan_.alerts) {
    if (alert.idServer != 0) {
      ofServers_.emplace(alert.idServer, &alert);
    } else {
      ofGroups_.emplace(alert.idGroup, &alert);
    }
  }
}

const store::PlannedTest* PlanIndex::Test(qint32 id) const {
  return Find(tests_, id);
}

const store::PlannedServer* PlanIndex::Server(qint32 id) const {
  return Find(servers_, id);
}

const store::PlannedGroup* PlanIndex::Group(qint32 id) const {
  const auto at = std::lower_bound(plan_.groups.begin(), plan_.groups.end(), id,
                                   [](const store::PlannedGroup& group, qint32 wanted) { return group.id < wanted; });
  return at != plan_.groups.end() && at->id == id ? &*at : nullptr;
}

std::vector<qint32> PlanIndex::TestsOfServer(qint32 idServer) const {
  std::vector<qint32> ids;
  for (const store::PlannedTest& test : plan_.tests) {
    if (test.idServer == idServer) ids.push_back(test.id);
  }
  return ids;
}

std::vector<qint32> PlanIndex::TestsOfGroup(qint32 idGroup) const {
  std::vector<qint32> ids;
  for (const store::PlannedTest& test : plan_.tests) {
    const store::PlannedServer* server = Server(test.idServer);
    if (server && (idGroup == 0 || server->idGroup == idGroup)) ids.push_back(test.id);
  }
  return ids;
}

std::vector<const store::PlannedAlert*> PlanIndex::AlertsFor(const store::PlannedServer& server) const {
  std::vector<const store::PlannedAlert*> alerts;
  const auto add = [&alerts](auto range) {
    for (auto at = range.first; at != range.second; ++at) alerts.push_back(at->second);
  };
  add(ofServers_.equal_range(server.id));
  add(ofGroups_.equal_range(server.idGroup));
  std::sort(alerts.begin(), alerts.end(), [](const auto* a, const auto* b) { return a->id < b->id; });
  return alerts;
}

const ScheduleRecord* PlanIndex::ScheduleOf(const store::PlannedServer& server) const {
  const store::PlannedGroup* group = Group(server.idGroup);
  const store::PlannedGroup* root = Group(0);
  return EffectiveSchedule(PointerTo(server.schedule), group ? PointerTo(group->schedule) : nullptr,
                           root ? PointerTo(root->schedule) : nullptr);
}

}  // namespace quarl::service
