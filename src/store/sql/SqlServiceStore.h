#pragma once

#include <optional>
#include <string>

#include "store/ServiceStore.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlServiceStore final : public ServiceStore {
 public:
  explicit SqlServiceStore(Database& database) : database_(database) {}
  std::optional<ServiceInstance> Claim(const ServiceInstance& instance, qint64 doubtfulNotBeforeMs) override;
  bool Beat(const QString& instance, qint64 nowMs, qint16 state) override;
  void Release(const QString& instance) override;
  std::optional<ServiceInstance> Instance() override;
  Plan ReadPlan() override;
  StoredStates ReadStates() override;
  ServiceNews News() override;
  bool Record(const QString& instance, const ResultBatch& batch) override;
  std::vector<ClaimedMessage> ClaimMessages(const QString& instance, qint64 nowMs, int limit) override;
  bool FinishMessage(const QString& instance, qint64 idMessage, const LogEntry& entry) override;
  bool PutBackMessage(const QString& instance, qint64 idMessage, qint64 notBeforeMs,
                      const std::optional<LogEntry>& entry) override;
  std::optional<qint64> NextMessageMs() override;
  int LogRetention() override;
  bool SetLogRetention(int records) override;

 private:
  struct Known {
    quint64 opening;  // of the database
    std::string mark;
    ServiceNews news;
  };
  /// Runs body(Connection&) in a transaction if the store belongs to this instance.
  template <typename Body>
  bool WriteAs(const QString& instance, Body&& body);

  Database& database_;
  std::optional<Known> known_;
};

}  // namespace quarl::store::sql
