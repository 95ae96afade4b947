#include "Channels.h"

#include <QFile>

#include "kit/Error.h"
#include "netscan/api/Echo.h"
#include "netscan/api/EchoHelper.h"
#include "netscan/api/EchoSocket.h"

namespace quarl::ping {

using netscan::EchoMethod;

std::unique_ptr<Line> Lines::Take() {
  for (const EchoMethod method : {EchoMethod::Datagram, EchoMethod::Raw})
    if (auto socket = netscan::EchoSocket::Open(method)) return std::make_unique<Line>(std::move(socket));
  {
    const std::lock_guard lock(mutex_);
    if (!kept_.empty()) {
      auto line = std::move(kept_.back());
      kept_.pop_back();
      return line;
    }
  }
  const QString program = netscan::EchoHelperProgram();
  if (auto helper = netscan::EchoHelper::Start(QFile::encodeName(program).toStdString()))
    return std::make_unique<Line>(std::move(helper));
  throw kit::Error("Echoes cannot be sent: the kernel permits this user no ICMP socket, and " + program.toStdString() +
                   " is missing or lacks the capability cap_net_raw.");
}

void Lines::Give(std::unique_ptr<Line> line, bool works) {
  if (!works || line->channel->Method() != EchoMethod::Helper) return;
  const std::lock_guard lock(mutex_);
  kept_.push_back(std::move(line));
}

}  // namespace quarl::ping
