#include "store/sql/SqlServiceStore.h"

#include <tuple>

#include "store/sql/CheckRequests.h"
#include "store/sql/Outbox.h"
#include "store/sql/PlanReader.h"
#include "store/sql/ResultWriter.h"
#include "store/sql/ServiceRow.h"

namespace quarl::store::sql {
namespace {

constexpr int kHighestRetention = 10'000'000;

}  // namespace

template <typename Body>
bool SqlServiceStore::WriteAs(const QString& instance, Body&& body) {
  return database_.Write([&](Connection& connection) { return IsOwner(connection, instance) && body(connection); });
}

std::optional<ServiceInstance> SqlServiceStore::Claim(const ServiceInstance& instance, qint64 doubtfulNotBeforeMs) {
  std::optional<ServiceInstance> other;
  std::ignore = database_.Write([&](Connection& connection) {
    other = ReadInstance(connection);
    if (other && other->id != instance.id && IsAlive(*other, instance.beatMs)) return false;
    other.reset();
    WriteInstance(connection, instance);
    PutBackAll(connection, doubtfulNotBeforeMs);
    RemoveStaleRequests(connection, instance.beatMs);
    return true;
  });
  return other;
}

bool SqlServiceStore::Beat(const QString& instance, qint64 nowMs, qint16 state) {
  return database_.Write([&](Connection& connection) { return BeatInstance(connection, instance, nowMs, state); });
}

void SqlServiceStore::Release(const QString& instance) {
  std::ignore = database_.Write([&](Connection& connection) {
    RemoveInstance(connection, instance);
    return true;
  });
}

std::optional<ServiceInstance> SqlServiceStore::Instance() {
  return database_.Read([](Connection& connection) { return ReadInstance(connection); });
}

Plan SqlServiceStore::ReadPlan() {
  return database_.ReadAtOnce([](Connection& connection) { return sql::ReadPlan(connection); });
}

StoredStates SqlServiceStore::ReadStates() {
  return database_.ReadAtOnce([](Connection& connection) { return sql::ReadStates(connection); });
}

ServiceNews SqlServiceStore::News() {
  // The mark is taken first: what comes in between is seen once more by the next look.
  std::string mark = database_.Read([](Connection& connection) { return connection.ChangeMark(); });
  if (known_ && known_->opening == database_.Openings() && known_->mark == mark) return known_->news;
  const quint64 opening = database_.Openings();
  ServiceNews news = database_.ReadAtOnce([](Connection& connection) {
    Query query(connection, "SELECT store_id, revision FROM store_properties");
    if (!query.Next()) ThrowDamaged(QStringLiteral("its properties are missing"));
    return ServiceNews{query.Text(0), query.Integer(1), OpenRequests(connection)};
  });
  known_ = Known{opening, std::move(mark), news};
  return news;
}

bool SqlServiceStore::Record(const QString& instance, const ResultBatch& batch) {
  return WriteAs(instance, [&](Connection& connection) {
    WriteBatch(connection, batch);
    return true;
  });
}

std::vector<ClaimedMessage> SqlServiceStore::ClaimMessages(const QString& instance, qint64 nowMs, int limit) {
  std::vector<ClaimedMessage> claimed;
  std::ignore = WriteAs(instance, [&](Connection& connection) {
    claimed = ClaimDue(connection, nowMs, limit);
    return !claimed.empty();
  });
  return claimed;
}

bool SqlServiceStore::FinishMessage(const QString& instance, qint64 idMessage, const LogEntry& entry) {
  return WriteAs(instance, [&](Connection& connection) {
    if (!TakeOut(connection, idMessage)) return false;
    WriteLogEntry(connection, entry);
    ShortenLog(connection);
    return true;
  });
}

bool SqlServiceStore::PutBackMessage(const QString& instance, qint64 idMessage, qint64 notBeforeMs,
                                     const std::optional<LogEntry>& entry) {
  return WriteAs(instance, [&](Connection& connection) {
    if (!PutBack(connection, idMessage, notBeforeMs)) return false;
    if (entry) {
      WriteLogEntry(connection, *entry);
      ShortenLog(connection);
    }
    return true;
  });
}

std::optional<qint64> SqlServiceStore::NextMessageMs() {
  return database_.Read([](Connection& connection) { return NextDue(connection); });
}

int SqlServiceStore::LogRetention() {
  return database_.Read([](Connection& connection) { return ReadLogRetention(connection); });
}

bool SqlServiceStore::SetLogRetention(int records) {
  if (records < 1 || records > kHighestRetention) return false;
  return database_.Write([&](Connection& connection) {
    Change(connection,
           "INSERT INTO settings (name, value) VALUES ('log_retention', $1)"
           " ON CONFLICT (name) DO UPDATE SET value = excluded.value",
           records);
    ShortenLog(connection);
    return true;
  });
}

}  // namespace quarl::store::sql
