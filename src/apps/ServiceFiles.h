#pragma once

#include <QString>

#include "store/StoreLocation.h"

namespace quarl::apps {

/// The file beside a store that its service process locks; "" for a store in memory.
QString ServiceLockFile(const store::StoreLocation& location);
/// Where the messages of a service process go that a program of the user started; "" for a store in memory.
QString ServiceMessagesFile(const store::StoreLocation& location);

}  // namespace quarl::apps
