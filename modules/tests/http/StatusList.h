#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace quarl::checks {

/// HTTP status codes as people write them: "200-299,301".
class StatusList {
 public:
  /// Nothing when the text is no list of numbers and ranges from 100 to 599.
  static std::optional<StatusList> Parse(std::string_view text);
  bool Has(long status) const;

 private:
  std::vector<std::pair<long, long>> ranges_;
};

}  // namespace quarl::checks
