#pragma once

#include <QString>

namespace quarl {

/// The text of a stored time (milliseconds since the epoch) in every view: local time, "yyyy-MM-dd HH:mm:ss",
/// the same in every locale.
QString DateTimeText(qint64 msSinceEpoch);

}  // namespace quarl
