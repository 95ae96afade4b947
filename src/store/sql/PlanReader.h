#pragma once

#include "store/ServiceRecords.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// What the service runs, by six queries. Belongs into a transaction.
Plan ReadPlan(Connection& connection);
/// By two queries. Belongs into a transaction.
StoredStates ReadStates(Connection& connection);

}  // namespace quarl::store::sql
