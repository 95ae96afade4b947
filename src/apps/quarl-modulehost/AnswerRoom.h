#pragma once

#include <string>

#include "GuardedText.h"
#include "OverrunWatch.h"

namespace quarl::host {

/// A buffer for what a check answers, used by one check after the other.
class AnswerRoom {
 public:
  /// @param size bytes with the NUL
  explicit AnswerRoom(std::size_t size);

  QuarlBuffer Buffer() const { return text_.Buffer(); }
  /// From now on an overrun is told on behalf of this request.
  void Follow(std::uint32_t request) { guard_.Follow(request); }
  /// What stands there up to the first NUL; leaves it empty.
  std::string Take();
  void Clear();

 private:
  helpers::GuardedText text_;
  WatchedGuard guard_;
};

}  // namespace quarl::host
