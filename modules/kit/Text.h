#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Texts from networks and programs, of which nothing is known before it is looked at.

namespace quarl::kit {

bool IsUtf8(std::string_view text);

/// The text with each byte sequence that is no UTF-8 replaced by U+FFFD, and NULs likewise.
std::string ToUtf8(std::string_view bytes);

/// The longest beginning of a valid UTF-8 text that takes at most this many bytes and cuts no character in two.
std::string_view CutUtf8(std::string_view text, std::size_t longest);

/// One line for people: what is no UTF-8 becomes U+FFFD, control and direction characters and white space become single
/// blanks, none at the ends; a line of more than `longest` bytes (at least 3) ends in "…" within them.
std::string OneLine(std::string_view bytes, std::size_t longest = 400);

/// The text with "***" in place of each secret that is not empty. Before a text is cut, or half a secret may stay.
std::string WithoutSecrets(std::string text, const std::vector<std::string>& secrets);

}  // namespace quarl::kit
