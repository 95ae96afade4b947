#pragma once

#include "store/sql/Dialect.h"

namespace quarl::store::sql {

/// Version of the schema that this program writes; it reads this one and all before it.
inline constexpr int kSchemaVersion = 2;

/// Brings a store to a version, in one transaction; an empty one is filled. Throws SqlError, also for a store that is
/// newer.
void Migrate(Connection& connection, Dialect& dialect, int version = kSchemaVersion);

}  // namespace quarl::store::sql
