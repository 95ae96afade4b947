#include "plugins/contract/ModuleWait.h"

#include <poll.h>

namespace quarl::plugins {

void PlainWait::Wait(HostCall& call) {
  while (!call.Done()) {
    pollfd watch{call.Descriptor(), POLLIN, 0};
    poll(&watch, 1, -1);
    call.Advance();
  }
}

}  // namespace quarl::plugins
