#pragma once

#include <unordered_map>
#include <vector>

#include "store/ServiceRecords.h"

namespace quarl::service {

/// A plan with ways to find things in it. What it gives lives as long as itself.
class PlanIndex {
 public:
  PlanIndex() = default;
  explicit PlanIndex(store::Plan plan);
  PlanIndex(PlanIndex&&) = default;
  PlanIndex& operator=(PlanIndex&&) = default;

  const store::Plan& All() const { return plan_; }
  /// Null: there is none of this id.
  const store::PlannedTest* Test(qint32 id) const;
  const store::PlannedServer* Server(qint32 id) const;
  const store::PlannedGroup* Group(qint32 id) const;
  std::vector<qint32> TestsOfServer(qint32 idServer) const;
  /// The tests of the group's servers; 0: of every server.
  std::vector<qint32> TestsOfGroup(qint32 idGroup) const;
  /// The alerts of a server and of its group, by id.
  std::vector<const store::PlannedAlert*> AlertsFor(const store::PlannedServer& server) const;
  /// The schedule in force for a server; null: none.
  const ScheduleRecord* ScheduleOf(const store::PlannedServer& server) const;

 private:
  store::Plan plan_;
  std::unordered_map<qint32, const store::PlannedTest*> tests_;
  std::unordered_map<qint32, const store::PlannedServer*> servers_;
  std::unordered_multimap<qint32, const store::PlannedAlert*> ofServers_, ofGroups_;
};

}  // namespace quarl::service
