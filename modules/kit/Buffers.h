#pragma once

#include <string>
#include <string_view>

#include "quarl_module.h"

namespace quarl::kit {

/// The text of a buffer up to its first NUL, at most size - 1 bytes; "" for no buffer.
std::string_view TextOf(const QuarlBuffer& buffer);
/// "" for nullptr.
std::string_view TextOf(const char* text);

/// Writes a text, cut where it does not fit (never within a character), and a NUL.
void WriteText(const QuarlBuffer& buffer, std::string_view text);
/// The same, with the room behind the text filled: with NULs for properties, with blanks for a result text.
void WriteFilled(const QuarlBuffer& buffer, std::string_view text, char filler);

}  // namespace quarl::kit
