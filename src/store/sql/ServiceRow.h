#pragma once

#include <optional>

#include "store/ServiceRecords.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// The row that says which service a store has.
std::optional<ServiceInstance> ReadInstance(Connection& connection);
/// Puts it in the place of the one that is there.
void WriteInstance(Connection& connection, const ServiceInstance& instance);
bool BeatInstance(Connection& connection, const QString& instance, qint64 nowMs, qint16 state);
void RemoveInstance(Connection& connection, const QString& instance);
/// True when the store belongs to this instance. Asked in the transaction that writes, it keeps an instance that was
/// replaced while it slept from writing anything.
bool IsOwner(Connection& connection, const QString& instance);
/// Takes out what belonged to the service of another content of the store: instance, requests and messages.
void ForgetService(Connection& connection);

}  // namespace quarl::store::sql
