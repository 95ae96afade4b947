#include "HostChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <stdexcept>

namespace quarl::host {
using plugins::HostReply;
using plugins::HostRequest;
using plugins::HostWord;

namespace {

constexpr int kMomentsForOthers = 1000;

}  // namespace

void AppendFrameOrRefusal(std::string& frames, const HostReply& reply) {
  try {
    AppendFrame(frames, reply);
  } catch (const std::length_error&) {
    HostReply refusal;
    refusal.id = reply.id;
    refusal.word = HostWord::Failed;
    refusal.texts = {"The module left more text than can be handed back."};
    AppendFrame(frames, refusal);
  }
}

HostChannel::HostChannel(int descriptor) : descriptor_(descriptor) {
  fcntl(descriptor_, F_SETFD, FD_CLOEXEC);
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) return;
  device_ = status.st_dev;
  node_ = status.st_ino;
}

std::optional<HostRequest> HostChannel::Receive() {
  for (;;) {
    if (auto request = Next()) return request;
    if (broken_) return std::nullopt;
    pollfd wanted{descriptor_, POLLIN, 0};
    if (poll(&wanted, 1, -1) < 0 && errno != EINTR) return std::nullopt;
    if (!Read()) return std::nullopt;
  }
}

bool HostChannel::Read() {
  static std::array<char, 65536> bytes;  // reading belongs to one thread
  const ssize_t size = recv(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (size > 0) frames_.Add({bytes.data(), static_cast<std::size_t>(size)});
  return size > 0 || (size < 0 && (errno == EINTR || errno == EAGAIN));
}

std::optional<HostRequest> HostChannel::Next() {
  const auto content = frames_.Next();
  if (!content) {
    broken_ = broken_ || frames_.Broken();
    return std::nullopt;
  }
  auto request = plugins::ReadRequest(*content);
  broken_ = broken_ || !request;
  return request;
}

bool HostChannel::Send(const HostReply& reply) {
  std::string frame;
  AppendFrameOrRefusal(frame, reply);
  return SendFrames(frame);
}

bool HostChannel::SendFrames(std::string_view frames) {
  const std::lock_guard lock(sending_);
  inFrame_ = true;
  const bool sent = IsStillOurs() && SendAll(frames.data(), frames.size());
  inFrame_ = false;
  return sent;
}

void HostChannel::SendFromHandler(const char* frame, std::size_t size) {
  // Another thread may be in the middle of a frame, or just behind it.
  const timespec moment{0, 1'000'000};
  for (int left = kMomentsForOthers; inFrame_.exchange(true); --left) {
    if (left == 0) return;
    nanosleep(&moment, nullptr);
  }
  if (IsStillOurs()) SendAll(frame, size);
}

// A module may have closed the descriptor, and its number may mean a file of the module by now.
bool HostChannel::IsStillOurs() const {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 && status.st_dev == device_ && status.st_ino == node_;
}

bool HostChannel::SendAll(const char* data, std::size_t size) const {
  while (size > 0) {
    const ssize_t sent = send(descriptor_, data, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    data += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

}  // namespace quarl::host
