#pragma once

#include <nlohmann/json.hpp>

#include <vector>

#include "apps/quarlctl/Table.h"
#include "store/Stores.h"

namespace quarl::ctl {

/// One list of a store, read by its record sets: a table for people and the same as a JSON list for scripts.
/// In JSON a value that the store does not have is null, times are UTC in ISO 8601, states 1 passed, 2 not run yet,
/// 3 failed.
struct Listing {
  Table table;
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
};

/// The root group, id 0, comes first.
Listing ListGroups(store::Stores& stores);
Listing ListServers(store::Stores& stores);
Listing ListTests(store::Stores& stores);
/// Those of groups, then those of servers.
Listing ListAlerts(store::Stores& stores);
/// Test types, then alert types.
Listing ListTypes(store::Stores& stores);

}  // namespace quarl::ctl
