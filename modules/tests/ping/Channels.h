#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "netscan/api/EchoSession.h"

namespace quarl::ping {

/// A way for echoes with the session that counts its sequences, so that a late answer is never taken for another's.
struct Line {
  explicit Line(std::unique_ptr<netscan::EchoChannel> way) : channel(std::move(way)) {}
  std::unique_ptr<netscan::EchoChannel> channel;
  netscan::EchoSession session{*channel};
};

/// Gives each check a line of its own. Sockets are opened anew each time; helper programs are kept. Thread-safe.
class Lines {
 public:
  /// Throws kit::Error when this user may send echoes in no way.
  std::unique_ptr<Line> Take();
  /// After a check.
  /// @param works false when nothing was answered: such a helper program may have ended
  void Give(std::unique_ptr<Line> line, bool works);

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<Line>> kept_;
};

}  // namespace quarl::ping
