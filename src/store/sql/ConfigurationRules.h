#pragma once

#include "store/Configuration.h"

namespace quarl::store::sql {

/// Throws StoreError for a configuration that no store can hold, with the record and what is wrong with it.
void CheckConfiguration(const Configuration& configuration);

}  // namespace quarl::store::sql
