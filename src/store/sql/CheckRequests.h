#pragma once

#include <functional>
#include <vector>

#include "base/Clock.h"
#include "store/ServiceRecords.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

/// Wishes to run tests now, which reach the service through a table of the store.
class CheckRequests {
 public:
  CheckRequests(Database& database, const Clock& clock, const SqlSetup& setup)
      : database_(database), clock_(clock), setup_(setup) {}

  // Each waits until the service has the results, for a bounded time. False: no running service, no such record, no
  // answer in time. Asking for every server is idGroup 0.
  bool RunGroup(qint32 idGroup);
  bool RunServer(qint32 idServer);
  bool RunTest(qint32 idTest);

 private:
  /// @param kind what the record's table and columns are named after.
  bool Run(std::string_view kind, qint32 id);
  bool Await(qint32 idRequest);
  bool HasService(Connection& connection);
  /// One that is about to stop finishes the checks that it has begun.
  bool MayAnswer(Connection& connection);

  Database& database_;
  const Clock& clock_;
  const SqlSetup& setup_;
};

/// The requests that the service has not answered yet, in their order.
std::vector<CheckRequest> OpenRequests(Connection& connection);
void AnswerRequest(Connection& connection, qint64 idRequest);
/// Removes requests that nobody waits for any more.
void RemoveStaleRequests(Connection& connection, qint64 nowMs);

}  // namespace quarl::store::sql
