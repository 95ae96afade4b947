#pragma once

#include <string>
#include <string_view>

namespace quarl::checks {

/// What a monitoring plug-in wrote.
struct PluginOutput {
  std::string text;         ///< first line that is not blank, without its performance data
  std::string performance;  ///< all well-formed items of all lines, one blank between them
};

/// Reads the convention's form: "text | items", then lines of long text, of which one may have a "|", behind which it
/// and all further lines are items. The bytes may be anything.
PluginOutput ReadPluginOutput(std::string_view output);

}  // namespace quarl::checks
