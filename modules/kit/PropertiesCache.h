#pragma once

#include <functional>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kit/Properties.h"

namespace quarl::kit {

/// What no single field can tell; see TestModule::Judge.
using Judge = std::function<std::string(const Properties& properties, std::string& key)>;

/// Properties that were read and judged; trouble is why they cannot be used, "" when they can.
struct ReadyProperties {
  Properties properties;
  std::string trouble;
};
ReadyProperties Prepare(std::string_view text, const Form& form, const Judge& judge);

/// Keeps the latest few thousand properties strings of one form in their read form. Thread-safe.
class PropertiesCache {
 public:
  static constexpr std::size_t kMaxEntries = 4096;                    ///< of each of two generations
  static constexpr std::size_t kMaxBytes = std::size_t{1024} * 1024;  ///< of texts, likewise

  /// @param form, judge the same at each call.
  std::shared_ptr<const ReadyProperties> Get(std::string_view text, const Form& form, const Judge& judge);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Entries = std::unordered_map<std::string, std::shared_ptr<const ReadyProperties>, Hash, std::equal_to<>>;

  std::shared_mutex mutex_;
  Entries young_;
  Entries old_;
  std::size_t youngBytes_ = 0;
};

}  // namespace quarl::kit
