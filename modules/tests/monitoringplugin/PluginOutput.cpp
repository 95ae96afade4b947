#include "tests/monitoringplugin/PluginOutput.h"

#include "kit/Text.h"
#include "tests/common/Texts.h"

namespace quarl::checks {
namespace {

constexpr std::string_view kDigits = "0123456789";

/// Takes the first item, "'a label'=1.5ms;2;3", off a text; "" when there is none.
std::string_view TakeItem(std::string_view& text) {
  text = Trimmed(text);
  bool quoted = false;
  std::size_t length = 0;
  for (; length < text.size() && (quoted || text[length] != ' '); ++length) {
    if (text[length] == '\'') quoted = !quoted;
  }
  const std::string_view item = text.substr(0, length);
  text.remove_prefix(length);
  return item;
}

/// Whether an item is a label, an equals sign, and a number with its unit or "U", perhaps with limits.
bool WellFormed(std::string_view item) {
  const std::size_t quote = item.starts_with('\'') ? item.rfind('\'') : 0;
  const std::size_t equals = item.find('=', quote);
  if (equals == 0 || equals == std::string_view::npos || (quote == 0 && item.starts_with('\''))) return false;
  if (quote > 0 && equals != quote + 1) return false;
  std::string_view value = item.substr(equals + 1);
  const std::string_view limits = value.substr(std::min(value.find(';'), value.size()));
  value = value.substr(0, value.size() - limits.size());
  if (limits.find_first_not_of("0123456789.;:~@+-eE") != std::string_view::npos) return false;
  if (value == "U") return true;
  if (value.starts_with('-') || value.starts_with('+')) value.remove_prefix(1);
  const std::size_t end = std::min(value.find_first_not_of("0123456789."), value.size());
  const std::string_view number = value.substr(0, end);
  const bool onePoint = number.find('.') == number.rfind('.');
  return onePoint && number.find_first_of(kDigits) != std::string_view::npos &&
         value.find_first_of("'=|", end) == std::string_view::npos;
}

void AddItems(std::string_view line, std::string& performance) {
  const std::string clean = kit::OneLine(line, line.size() * 3 + 3);
  std::string_view rest = clean;
  for (std::string_view item = TakeItem(rest); !item.empty(); item = TakeItem(rest)) {
    if (!WellFormed(item)) continue;
    if (!performance.empty()) performance += ' ';
    performance += item;
  }
}

}  // namespace

PluginOutput ReadPluginOutput(std::string_view output) {
  PluginOutput result;
  bool first = true;
  bool itemsOnly = false;
  while (!output.empty()) {
    const std::size_t end = std::min(output.find('\n'), output.size());
    const std::string_view line = output.substr(0, end);
    output.remove_prefix(std::min(end + 1, output.size()));
    if (first && Trimmed(line).empty()) continue;
    const std::size_t bar = itemsOnly ? 0 : line.find('|');
    if (first) result.text = kit::OneLine(line.substr(0, bar));
    if (bar != std::string_view::npos) AddItems(itemsOnly ? line : line.substr(bar + 1), result.performance);
    itemsOnly = itemsOnly || (!first && bar != std::string_view::npos);
    first = false;
  }
  return result;
}

}  // namespace quarl::checks
