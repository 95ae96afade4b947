// A host of modules that answers a check with the words "stuck" by saying Stuck, and then does not end by itself. What
// waits beside that is answered only by a host that has not said so.
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "plugins/contract/HostProtocol.h"

using namespace quarl::plugins;

namespace {

void Send(const HostReply& reply) {
  const std::string frame = FrameOf(reply);
  if (send(kHostChannel, frame.data(), frame.size(), MSG_NOSIGNAL) < 0) _exit(1);
}

}  // namespace

int main() {
  FrameBuffer frames;
  std::vector<std::uint32_t> waiting;
  bool stuck = false;
  std::array<char, 65536> bytes;
  for (ssize_t size = 1; size > 0;) {
    size = recv(kHostChannel, bytes.data(), bytes.size(), 0);
    frames.Add({bytes.data(), static_cast<std::size_t>(size > 0 ? size : 0)});
    while (const auto content = frames.Next()) {
      const auto request = ReadRequest(*content);
      if (!request) return 1;
      HostReply reply;
      reply.id = request->id;
      if (request->texts.at(3) == "stuck") {
        stuck = true;
        reply.word = HostWord::Stuck;
        reply.texts = {"stuck"};
        Send(reply);
      } else if (!stuck) {
        waiting.push_back(request->id);
      }
    }
    for (const std::uint32_t id : waiting) {
      if (stuck) break;
      HostReply reply;
      reply.id = id;
      reply.result = 1;
      reply.texts = {"fine", ""};
      reply.numbers = {1000};
      Send(reply);
    }
    waiting.clear();
  }
  for (; stuck;) pause();
}
