#pragma once

#include <string>

#include "GuardedText.h"
#include "OverrunWatch.h"
#include "plugins/contract/HostProtocol.h"

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

/// Where checks answer, one after the other.
class CheckRooms {
 public:
  /// For the next check: nothing stands there, and an overrun is told on behalf of it.
  void Begin(std::uint32_t request);
  QuarlCheckResult Result() const;
  /// What the check came to; leaves the rooms empty.
  plugins::HostReply Reply(std::uint32_t request, int16_t state, const QuarlCheckResult& result);

 private:
  AnswerRoom text_{plugins::kCheckTextSize};
  AnswerRoom performance_{plugins::kCheckTextSize};
};

/// What a module is asked; good as long as the request, which is one for a check.
QuarlCheckRequest QuestionOf(const plugins::HostRequest& request);

}  // namespace quarl::host
