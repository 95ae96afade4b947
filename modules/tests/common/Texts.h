#pragma once

#include <string>
#include <string_view>

#include "kit/Placeholders.h"
#include "kit/TestModule.h"

namespace quarl::checks {

/// {name} and {address}.
inline kit::Placeholders PlaceholdersOf(const kit::Server& server) {
  return {{"name", server.name}, {"address", server.address}};
}

/// Without blanks at both ends.
std::string_view Trimmed(std::string_view text);

/// ASCII letters in lower case, everything else as it is.
std::string Lower(std::string_view text);

/// Whether there is a control character in it.
bool HasControl(std::string_view text);

}  // namespace quarl::checks
