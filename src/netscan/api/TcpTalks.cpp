#include "netscan/api/TcpTalks.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quarl::netscan {
namespace {

constexpr std::size_t kMostReceived = std::size_t{128} * 1024;  // nobody has that much to say here

}  // namespace

TcpTalks::TcpTalks(ScanLoop& loop, Limits limits) : loop_(loop), limits_(limits) {}

TcpTalks::~TcpTalks() {
  while (!talks_.empty()) End(talks_.begin()->first);
}

void TcpTalks::Begin(in_addr_t address, in_port_t port, ByteVector first, Heard heard, std::function<void()> refused) {
  waiting_.push_back({address, port, std::move(first), std::move(heard), std::move(refused)});
  BeginWaiting();
}

void TcpTalks::BeginWaiting() {
  while (!waiting_.empty() && talks_.size() < limits_.atOnce) {
    Talk talk = std::move(waiting_.front());
    waiting_.pop_front();
    const Id id = ++last_;
    if (!Connect(id, talk)) continue;
    talks_.emplace(id, std::move(talk));
    loop_.After(limits_.time, [this, id] {
      End(id);
      BeginWaiting();
    });
  }
}

bool TcpTalks::Connect(Id id, Talk& talk) {
  talk.descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (talk.descriptor < 0) return false;
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = talk.address;
  name.sin_port = htons(talk.port);
  if (connect(talk.descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 || errno == EINPROGRESS) {
    Watch(id, talk);
    return true;
  }
  close(talk.descriptor);
  return false;
}

void TcpTalks::Watch(Id id, const Talk& talk) {
  const bool sending = talk.sent < talk.toSend.size();
  loop_.Watch(talk.descriptor, sending ? POLLOUT : POLLIN, [this, id](short) {
    Act(id);
    BeginWaiting();
  });
}

void TcpTalks::End(Id id) {
  const auto talk = talks_.find(id);
  if (talk == talks_.end()) return;
  loop_.Forget(talk->second.descriptor);
  close(talk->second.descriptor);
  talks_.erase(talk);
}

void TcpTalks::Act(Id id) {
  Talk& talk = talks_.at(id);
  const bool goesOn = talk.sent < talk.toSend.size() ? SendSome(talk) : ReceiveSome(talk);
  if (goesOn)
    Watch(id, talk);
  else
    End(id);
}

bool TcpTalks::SendSome(Talk& talk) {
  const ssize_t size =
      send(talk.descriptor, talk.toSend.data() + talk.sent, talk.toSend.size() - talk.sent, MSG_NOSIGNAL);
  const int error = size < 0 ? errno : 0;
  if (error == ECONNREFUSED && talk.refused) talk.refused();
  if (size < 0) return error == EAGAIN || error == EINTR;
  talk.sent += static_cast<std::size_t>(size);
  return true;
}

bool TcpTalks::ReceiveSome(Talk& talk) {
  std::array<std::uint8_t, 16384> buffer;
  const ssize_t size = recv(talk.descriptor, buffer.data(), buffer.size(), 0);
  if (size < 0) return errno == EAGAIN || errno == EINTR;
  talk.received.insert(talk.received.end(), buffer.begin(), buffer.begin() + size);
  Next next = talk.heard(talk.received, size == 0);
  if (next.finished || size == 0 || talk.received.size() > kMostReceived) return false;
  if (next.send.empty()) return true;
  talk.toSend = std::move(next.send);
  talk.sent = 0;
  talk.received.clear();
  return true;
}

}  // namespace quarl::netscan
