#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarl::kit {

/// Names without braces, and what stands for them.
using Placeholders = std::vector<std::pair<std::string_view, std::string>>;

/// A text with "{name}" replaced; "{{" and "}}" stand for a brace itself. What is put in is not looked at again.
/// Throws Error for a name that is not known (its sentence lists the known ones) and for a single brace.
std::string Expand(std::string_view text, const Placeholders& known);

/// "" when Expand() would take the text, else its sentence.
std::string PlaceholderDefect(std::string_view text, const std::vector<std::string_view>& known);

}  // namespace quarl::kit
