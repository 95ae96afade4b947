#include "service/Demands.h"

#include <algorithm>
#include <unordered_set>

namespace quarl::service {

bool Demands::Take(const store::CheckRequest& request, const PlanIndex& plan, std::vector<qint32>& tests) {
  if (waiting_.contains(request.id)) return false;
  tests.clear();
  if (request.idTest && plan.Test(*request.idTest)) tests.push_back(*request.idTest);
  if (request.idServer) tests = plan.TestsOfServer(*request.idServer);
  if (request.idGroup) tests = plan.TestsOfGroup(*request.idGroup);
  Tests& waited = waiting_[request.id];
  for (const qint32 id : tests) waited.emplace(id, false);
  return true;
}

void Demands::Begun(qint32 idTest) {
  for (auto& [id, tests] : waiting_) {
    const auto at = tests.find(idTest);
    if (at != tests.end()) at->second = true;
  }
}

std::vector<qint64> Demands::Done(qint32 idTest) {
  std::vector<qint64> done;
  for (auto& [id, tests] : waiting_) {
    const auto at = tests.find(idTest);
    if (at == tests.end() || !at->second) continue;
    tests.erase(at);
    if (tests.empty()) done.push_back(id);
  }
  return done;
}

std::vector<qint64> Demands::Done(const PlanIndex& plan) {
  std::vector<qint64> done;
  for (auto& [id, tests] : waiting_) {
    const std::size_t lost = std::erase_if(tests, [&plan](const auto& test) { return !plan.Test(test.first); });
    if (lost > 0 && tests.empty()) done.push_back(id);
  }
  return done;
}

void Demands::Keep(const std::vector<store::CheckRequest>& open) {
  std::unordered_set<qint64> ids;
  for (const store::CheckRequest& request : open) ids.insert(request.id);
  std::erase_if(waiting_, [&ids](const auto& entry) { return !ids.contains(entry.first); });
}

}  // namespace quarl::service
