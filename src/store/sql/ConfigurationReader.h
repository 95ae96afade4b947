#pragma once

#include "store/Configuration.h"
#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// The configuration in a store, by six queries. Belongs into a transaction.
Configuration ReadConfiguration(Connection& connection);

}  // namespace quarl::store::sql
