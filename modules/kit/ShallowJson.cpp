#include "kit/ShallowJson.h"

namespace quarl::kit {

Json ParseShallow(std::string_view text, int deepest) {
  bool tooDeep = false;
  const auto look = [&](int depth, Json::parse_event_t, const Json&) {
    tooDeep = tooDeep || depth > deepest;
    return !tooDeep;
  };
  Json value = Json::parse(text, look, false);
  return tooDeep || value.is_discarded() ? Json() : value;
}

}  // namespace quarl::kit
