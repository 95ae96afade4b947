#include "kit/Placeholders.h"

#include <algorithm>

#include "kit/Error.h"
#include "kit/Text.h"

namespace quarl::kit {
namespace {

constexpr std::size_t kLongestShownName = 40;

std::string Quoted(std::string_view name) {
  return "\"{" + OneLine(name, kLongestShownName) + "}\"";
}

[[noreturn]] void RefuseName(std::string_view name, const Placeholders& known) {
  std::string text = "There is no placeholder " + Quoted(name) + "; ";
  if (known.empty()) throw Error(text + "a brace itself is written twice.");
  text += "possible are ";
  for (std::size_t at = 0; at < known.size(); ++at) {
    if (at > 0) text += at + 1 == known.size() ? " and " : ", ";
    text += Quoted(known[at].first);
  }
  throw Error(text + ".");
}

const std::string& ValueOf(std::string_view name, const Placeholders& known) {
  const auto fits = [&](const auto& placeholder) { return placeholder.first == name; };
  const auto found = std::find_if(known.begin(), known.end(), fits);
  if (found == known.end()) RefuseName(name, known);
  return found->second;
}

}  // namespace

std::string Expand(std::string_view text, const Placeholders& known) {
  std::string expanded;
  while (!text.empty()) {
    const std::size_t brace = text.find_first_of("{}");
    expanded += text.substr(0, brace);
    if (brace == std::string_view::npos) break;
    text.remove_prefix(brace);
    if (text.size() > 1 && text[1] == text[0]) {
      expanded += text[0];
      text.remove_prefix(2);
      continue;
    }
    const std::size_t end = text.find_first_of("{}", 1);
    if (text[0] == '}' || end == std::string_view::npos || text[end] == '{')
      throw Error(std::string("A single \"") + text[0] + "\" stands in the text; a brace itself is written twice.");
    expanded += ValueOf(text.substr(1, end - 1), known);
    text.remove_prefix(end + 1);
  }
  return expanded;
}

std::string PlaceholderDefect(std::string_view text, const std::vector<std::string_view>& known) {
  Placeholders names;
  for (const std::string_view name : known) names.emplace_back(name, std::string());
  try {
    Expand(text, names);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

}  // namespace quarl::kit
