#pragma once

#include <QVariant>

namespace quarl {

/// Turns a Null field value into the empty string and leaves every other value as it is.
QVariant NullToEmpty(const QVariant& value);

}  // namespace quarl
