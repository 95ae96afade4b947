#pragma once

#include <unordered_map>
#include <vector>

#include "service/PlanIndex.h"

namespace quarl::service {

/// Which check requests wait for which tests. A request is answered when each of its tests has had a run that began
/// after the request came, or is no more.
class Demands {
 public:
  /// True for a request that was not known; then the tests are those to demand, maybe none.
  [[nodiscard]] bool Take(const store::CheckRequest& request, const PlanIndex& plan, std::vector<qint32>& tests);
  void Begun(qint32 idTest);
  /// The requests that are answered by the end of a test's run; each is told once.
  [[nodiscard]] std::vector<qint64> Done(qint32 idTest);
  /// The same by the end of tests that the plan does not have.
  [[nodiscard]] std::vector<qint64> Done(const PlanIndex& plan);
  /// Forgets requests that are not open any more.
  void Keep(const std::vector<store::CheckRequest>& open);

 private:
  using Tests = std::unordered_map<qint32, bool>;  // whether its run has begun
  std::unordered_map<qint64, Tests> waiting_;
};

}  // namespace quarl::service
