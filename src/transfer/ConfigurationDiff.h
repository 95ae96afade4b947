#pragma once

#include <QStringList>

#include "store/Configuration.h"

namespace quarl::transfer {

/// What turns one configuration into another, for people: one line a record, additions and changes in the order of
/// the later configuration (types, groups, servers, tests, alerts), then removals in the order of the earlier one.
/// Names are escaped for display. Property strings are opaque and may hold secrets, so that only their change is told.
struct ConfigurationDiff {
  QStringList lines;
  int added = 0;
  int changed = 0;
  int removed = 0;
};

/// Records are the same when their kind and id are; id 0 in the later configuration is a new record.
ConfigurationDiff CompareConfigurations(const store::Configuration& before, const store::Configuration& after);

}  // namespace quarl::transfer
