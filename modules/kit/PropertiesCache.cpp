#include "kit/PropertiesCache.h"

#include <mutex>

namespace quarl::kit {

ReadyProperties Prepare(std::string_view text, const Form& form, const Judge& judge) {
  ReadyProperties ready{Properties::Read(text, form), {}};
  ready.trouble = ready.properties.Note();
  if (!ready.trouble.empty()) return ready;
  std::optional<Finding> finding = FirstDefect(form, ready.properties.Values());
  if (!finding) {
    finding.emplace();
    finding->text = judge(ready.properties, finding->key);
    if (finding->text.empty()) return ready;
  }
  const Field* field = FindField(form, finding->key);
  ready.trouble = field == nullptr ? finding->text : field->label + ": " + finding->text;
  return ready;
}

std::shared_ptr<const ReadyProperties> PropertiesCache::Get(std::string_view text, const Form& form,
                                                            const Judge& judge) {
  {
    const std::shared_lock lock(mutex_);
    const auto known = young_.find(text);
    if (known != young_.end()) return known->second;
  }
  std::shared_ptr<const ReadyProperties> ready;
  {
    const std::shared_lock lock(mutex_);
    const auto known = old_.find(text);
    if (known != old_.end()) ready = known->second;
  }
  if (!ready) ready = std::make_shared<const ReadyProperties>(Prepare(text, form, judge));
  const std::unique_lock lock(mutex_);
  if (young_.size() >= kMaxEntries || youngBytes_ + text.size() > kMaxBytes) {
    old_ = std::exchange(young_, {});
    youngBytes_ = 0;
  }
  if (young_.emplace(text, ready).second) youngBytes_ += text.size();
  return ready;
}

}  // namespace quarl::kit
