#include "CallTexts.h"

namespace quarl::host {

QuarlBuffer CallTexts::Add(std::string_view text) {
  helpers::GuardedText guarded(text);
  WatchedGuard guard(guarded.Guard(), helpers::GuardedText::GuardSize(), request_);
  texts_.push_back({std::move(guarded), std::move(guard)});
  return texts_.back().text.Buffer();
}

QuarlBuffer CallTexts::AddFilled(std::size_t size, char filling) {
  return Add(std::string(size - 1, filling));
}

std::vector<std::string> CallTexts::Texts() const {
  std::vector<std::string> texts;
  texts.reserve(texts_.size());
  for (const Watched& watched : texts_) texts.push_back(watched.text.Text());
  return texts;
}

}  // namespace quarl::host
