// A server for load: answers every connection "ready" after a while and closes it. Prints the port that it listens on,
// on all addresses of this machine, and runs until it is killed.
//
//   quarl_slow_server MILLISECONDS

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <queue>
#include <string_view>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

struct Waiting {
  Clock::time_point due;
  int socket;
};

void Require(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

void AllowManyConnections() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

int Listen() {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
  Require(listener >= 0, "socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  socklen_t size = sizeof(address);
  Require(bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0, "bind");
  Require(listen(listener, SOMAXCONN) == 0, "listen");
  Require(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0, "getsockname");
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

void Answer(int socket) {
  constexpr std::string_view kText = "ready\r\n";
  if (send(socket, kText.data(), kText.size(), MSG_NOSIGNAL) < 0) std::perror("send");
  close(socket);
}

[[noreturn]] void Serve(int listener, std::chrono::milliseconds latency) {
  std::queue<Waiting> waiting;  // in the order in which they are due
  for (;;) {
    int wait = -1;
    if (!waiting.empty()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(waiting.front().due - Clock::now());
      wait = static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
    }
    pollfd wanted{listener, POLLIN, 0};
    poll(&wanted, 1, wait);
    const Clock::time_point now = Clock::now();
    for (;;) {
      const int socket = accept(listener, nullptr, nullptr);
      Require(socket >= 0 || errno == EAGAIN || errno == EINTR || errno == ECONNABORTED, "accept");
      if (socket < 0) break;
      waiting.push({now + latency, socket});
    }
    for (; !waiting.empty() && waiting.front().due <= now; waiting.pop()) Answer(waiting.front().socket);
  }
}

}  // namespace

int main(int count, char** words) {
  int latency = 0;
  const std::string_view text = count == 2 ? words[1] : "";
  const auto read = std::from_chars(text.data(), text.data() + text.size(), latency);
  if (text.empty() || read.ec != std::errc() || read.ptr != text.data() + text.size() || latency < 0) {
    std::fprintf(stderr, "usage: quarl_slow_server MILLISECONDS\n");
    return 2;
  }
  try {
    AllowManyConnections();
    Serve(Listen(), std::chrono::milliseconds(latency));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 1;
}
