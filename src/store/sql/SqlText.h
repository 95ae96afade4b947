#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace quarl::store::sql {

/// Places in a text, and what they stand for.
using Places = std::initializer_list<std::pair<std::string_view, std::string_view>>;

/// The text with its places filled, one after the other: what fills one may hold those that follow.
inline std::string Filled(std::string text, Places places) {
  for (const auto& [place, word] : places) {
    for (auto at = text.find(place); at != std::string::npos; at = text.find(place, at + word.size())) {
      text.replace(at, place.size(), word);
    }
  }
  return text;
}

}  // namespace quarl::store::sql
