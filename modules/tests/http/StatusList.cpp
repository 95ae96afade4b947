#include "tests/http/StatusList.h"

#include <algorithm>
#include <charconv>

#include "tests/common/Texts.h"

namespace quarl::checks {
namespace {

std::optional<long> StatusOf(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  long value = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  const bool whole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
  return whole && value >= 100 && value <= 599 ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<StatusList> StatusList::Parse(std::string_view text) {
  StatusList list;
  for (bool last = false; !last;) {
    const std::size_t comma = text.find(',');
    last = comma == std::string_view::npos;
    const std::string_view item = text.substr(0, comma);
    const std::size_t dash = item.find('-');
    const std::optional<long> low = StatusOf(item.substr(0, dash));
    const std::optional<long> high = dash == std::string_view::npos ? low : StatusOf(item.substr(dash + 1));
    if (!low || !high || *low > *high) return std::nullopt;
    list.ranges_.emplace_back(*low, *high);
    if (!last) text.remove_prefix(comma + 1);
  }
  return list;
}

bool StatusList::Has(long status) const {
  return std::any_of(ranges_.begin(), ranges_.end(),
                     [&](const auto& range) { return range.first <= status && status <= range.second; });
}

}  // namespace quarl::checks
