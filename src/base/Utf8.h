#pragma once

#include <QString>
#include <string_view>

namespace quarl {

/// The text of UTF-8 bytes, all of it: QString::fromUtf8 drops a byte order mark at the beginning, which in a name or
/// a property string is a character like any other.
QString FromUtf8(std::string_view utf8);

}  // namespace quarl
