#pragma once

#include <string_view>

#include "kit/Form.h"

namespace quarl::kit {

/// What a foreign text holds; null when it is no JSON or has more levels than this. Copying and writing a value descend
/// into each.
Json ParseShallow(std::string_view text, int deepest);

}  // namespace quarl::kit
