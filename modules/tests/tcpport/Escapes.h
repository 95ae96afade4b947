#pragma once

#include <string>
#include <string_view>

namespace quarl::tcpport {

/// The bytes of a text with the escapes \r \n \t \\ \xNN (two hexadecimal digits). Throws kit::Error for any other
/// backslash.
std::string Unescape(std::string_view text);

}  // namespace quarl::tcpport
