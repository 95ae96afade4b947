#pragma once

#include <string_view>
#include <vector>

#include "GuardedText.h"
#include "OverrunWatch.h"

namespace quarl::host {

/// The texts of one call as the buffers that the module gets.
class CallTexts {
 public:
  explicit CallTexts(std::uint32_t request) : request_(request) {}

  QuarlBuffer Add(std::string_view text);
  /// A buffer of so many bytes with the NUL, filled with one character.
  QuarlBuffer AddFilled(std::size_t size, char filling);
  /// What the module left in each, in the order in which they were added.
  std::vector<std::string> Texts() const;

 private:
  struct Watched {
    helpers::GuardedText text;
    WatchedGuard guard;
  };

  std::uint32_t request_;
  std::vector<Watched> texts_;
};

}  // namespace quarl::host
