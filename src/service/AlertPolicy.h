#pragma once

#include <QTimeZone>
#include <vector>

#include "service/PlanIndex.h"

namespace quarl::service {

/// What has changed for the worse or the better. A server counts as failed while one of its tests does, so that its
/// change always comes with one of a test, or with the end of the test itself.
struct StateChange {
  const store::PlannedServer* server = nullptr;
  const store::PlannedTest* test = nullptr;  ///< null: the failed tests of the server are no more
  bool failed = false;                       ///< what the test, or without one the server, now counts as
  bool serverChanged = false;                ///< the server changed with it
  int failedTests = 0;                       ///< of the server, now
  int failures = 0;                          ///< of the test, in a row
  QString text;                              ///< of the test's result
  qint64 timeMs = 0;
  qint64 sinceMs = 0;  ///< since when the server counts, or counted, as failed
};

/// Decides what is said to whom when something changes: the one stage between the recorder and the outbox. It is asked
/// in the order of the changes, on the service's thread; what it gives is written in the transaction of the change.
class AlertPolicy {
 public:
  virtual ~AlertPolicy() = default;
  virtual std::vector<store::OutgoingMessage> MessagesFor(const StateChange& change, const PlanIndex& plan) = 0;
};

/// Tells every alert of the server and of its group of every change, at once and once. A change of a test that changes
/// its server too is one message about both.
class DirectPolicy final : public AlertPolicy {
 public:
  explicit DirectPolicy(const QTimeZone& zone) : zone_(zone) {}
  std::vector<store::OutgoingMessage> MessagesFor(const StateChange& change, const PlanIndex& plan) override;

 private:
  QTimeZone zone_;  // of times in texts
};

}  // namespace quarl::service
