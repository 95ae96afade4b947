#include "store/sql/CheckRequests.h"

#include <QThread>
#include <algorithm>

#include "store/sql/Rows.h"
#include "store/sql/ServiceRow.h"
#include "store/sql/SqlText.h"

namespace quarl::store::sql {
namespace {

constexpr qint64 kPollMs = 25;
constexpr qint64 kStaleMs = 60'000;

std::optional<qint32> IdOrNone(Query& query, int column) {
  if (query.IsNull(column)) return std::nullopt;
  return query.Int32(column);
}

}  // namespace

bool CheckRequests::HasService(Connection& connection) {
  constexpr qint16 kRunning = 4;
  const std::optional<ServiceInstance> instance = ReadInstance(connection);
  return instance && instance->state == kRunning && IsAlive(*instance, clock_.NowMs());
}

bool CheckRequests::MayAnswer(Connection& connection) {
  const std::optional<ServiceInstance> instance = ReadInstance(connection);
  return instance && IsAlive(*instance, clock_.NowMs());
}

bool CheckRequests::RunGroup(qint32 idGroup) {
  return Run("group", idGroup);
}

bool CheckRequests::RunServer(qint32 idServer) {
  return Run("server", idServer);
}

bool CheckRequests::RunTest(qint32 idTest) {
  return Run("test", idTest);
}

bool CheckRequests::Run(std::string_view kind, qint32 id) {
  if (!database_.Read([&](Connection& connection) { return HasService(connection); })) return false;
  const std::string insert = Filled(
      "INSERT INTO check_requests (id_request, id_%kind%, requested_ms)"
      " SELECT $1, id_%kind%, $2 FROM %kind%s WHERE id_%kind% = $3",
      {{"%kind%", kind}});
  const qint32 request = database_.Write([&](Connection& connection) {
    const qint32 next = NextId(connection, "requests");
    return next > 0 && Change(connection, insert, next, clock_.NowMs(), id) > 0 ? next : 0;
  });
  return request > 0 && Await(request);
}

bool CheckRequests::Await(qint32 idRequest) {
  const qint64 end = clock_.SteadyMs() + setup_.checkWaitMs;
  bool answered = false;
  for (bool open = true; open;) {
    const qint64 left = end - clock_.SteadyMs();
    if (left <= 0) break;
    const int wait = static_cast<int>(std::min(left, kPollMs));
    if (setup_.pause) {
      setup_.pause(wait);
    } else {
      QThread::msleep(static_cast<unsigned long>(wait));
    }
    open = database_.ReadAtOnce([&](Connection& connection) {
      Query query(connection, "SELECT answered FROM check_requests WHERE id_request = $1", idRequest);
      if (!query.Next()) return false;  // its target was removed
      answered = query.Integer(0) != 0;
      return !answered && MayAnswer(connection);
    });
  }
  std::ignore = database_.Write([&](Connection& connection) {
    return Change(connection, "DELETE FROM check_requests WHERE id_request = $1", idRequest);
  });
  return answered;
}

std::vector<CheckRequest> OpenRequests(Connection& connection) {
  std::vector<CheckRequest> requests;
  Query query(connection,
              "SELECT id_request, id_group, id_server, id_test, requested_ms FROM check_requests WHERE answered = 0"
              " ORDER BY id_request");
  while (query.Next()) {
    requests.push_back({query.Int32(0), IdOrNone(query, 1), IdOrNone(query, 2), IdOrNone(query, 3), query.Integer(4)});
  }
  return requests;
}

void AnswerRequest(Connection& connection, qint64 idRequest) {
  Change(connection, "UPDATE check_requests SET answered = 1 WHERE id_request = $1", idRequest);
}

void RemoveStaleRequests(Connection& connection, qint64 nowMs) {
  Change(connection, "DELETE FROM check_requests WHERE requested_ms < $1 OR requested_ms > $2", nowMs - kStaleMs,
         nowMs + kStaleMs);
}

}  // namespace quarl::store::sql
