#pragma once

#include "store/sql/Dialect.h"

namespace quarl::store::sql {

/// Version of the schema that this program writes; it reads this one and all before it.
inline constexpr int kSchemaVersion = 1;

/// Brings a store to kSchemaVersion, in one transaction; an empty one is filled. Throws SqlError.
void Migrate(Connection& connection, Dialect& dialect);

}  // namespace quarl::store::sql
