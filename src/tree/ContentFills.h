#pragma once

#include "store/RecordSet.h"
#include "tree/ContentRows.h"
#include "tree/NodeImages.h"

namespace quarl::tree {

/// The rows of the three lists from their record sets: a row a record, in their order, each filled in the order key
/// (servers, tests), icon, texts. A value that cannot be shown throws Error; the rows before it are whole then, and
/// its own has what was set until then. The columns are the caller's.

/// @param withGroup adds the group's name.
void FillServers(ContentRows& rows, NodeImages& icons, store::RecordSet servers, bool withGroup);
void FillTests(ContentRows& rows, NodeImages& icons, store::RecordSet tests);
/// The text comes before the icon here, and there are no keys.
void FillLog(ContentRows& rows, NodeImages& icons, store::RecordSet log);

}  // namespace quarl::tree
