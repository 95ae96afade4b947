#pragma once

#include <optional>
#include <vector>

#include "store/ServiceRecords.h"

namespace quarl::store {

/// The store as the monitoring service uses it. One service a store: whoever claimed it passes its instance's id to
/// every operation that writes, and such an operation does nothing and gives false, or nothing, once the store belongs
/// to another instance or to none. For threads and errors see SystemConfig.
class ServiceStore {
 public:
  virtual ~ServiceStore() = default;

  // --- Being the service of this store ---------------------------------------------------------------------------
  /// Makes this instance, at the time of its beatMs, the service of the store. Nothing: it is. Otherwise the living
  /// instance that has it.
  /// @param doubtfulNotBeforeMs nobody knows whether messages that the one before had claimed were sent: they are sent
  ///        again, and not before this time.
  [[nodiscard]] virtual std::optional<ServiceInstance> Claim(const ServiceInstance& instance,
                                                             qint64 doubtfulNotBeforeMs) = 0;
  /// A sign of life. False: the store belongs to another instance, or to none.
  [[nodiscard]] virtual bool Beat(const QString& instance, qint64 nowMs, qint16 state) = 0;
  /// Gives the store up. Harmless when it is another's.
  virtual void Release(const QString& instance) = 0;
  /// The instance that claimed the store last and did not give it up; see IsAlive().
  [[nodiscard]] virtual std::optional<ServiceInstance> Instance() = 0;

  // --- Reading -----------------------------------------------------------------------------------------------------
  /// In one read transaction; six statements whatever the size.
  [[nodiscard]] virtual Plan ReadPlan() = 0;
  [[nodiscard]] virtual StoredStates ReadStates() = 0;
  /// Cheap enough for ten times a second: nothing but one number is read while nobody has changed anything.
  [[nodiscard]] virtual ServiceNews News() = 0;

  // --- Results -------------------------------------------------------------------------------------------------------
  /// Writes a batch whole or not at all, and shortens the log to LogRetention() records.
  [[nodiscard]] virtual bool Record(const QString& instance, const ResultBatch& batch) = 0;

  // --- The outbox --------------------------------------------------------------------------------------------------
  /// Claims messages that are due, oldest first, at most limit. A message waits while an earlier one of its thread is
  /// on its way to the same alert.
  [[nodiscard]] virtual std::vector<ClaimedMessage> ClaimMessages(const QString& instance, qint64 nowMs, int limit) = 0;
  /// Takes a claimed message out of the outbox, delivered or given up, with the record that says so.
  [[nodiscard]] virtual bool FinishMessage(const QString& instance, qint64 idMessage, const LogEntry& entry) = 0;
  /// Puts a claimed message back until a later time.
  /// @param entry goes into the log, where there is one.
  [[nodiscard]] virtual bool PutBackMessage(const QString& instance, qint64 idMessage, qint64 notBeforeMs,
                                            const std::optional<LogEntry>& entry) = 0;
  /// When the next message that is not claimed is due; nothing: there is none.
  [[nodiscard]] virtual std::optional<qint64> NextMessageMs() = 0;

  // --- Settings ------------------------------------------------------------------------------------------------------
  /// How many log records are kept, 1 to 10,000,000.
  [[nodiscard]] virtual int LogRetention() = 0;
  /// False: out of range.
  virtual bool SetLogRetention(int records) = 0;
};

inline constexpr int kDefaultLogRetention = 10'000;

}  // namespace quarl::store
