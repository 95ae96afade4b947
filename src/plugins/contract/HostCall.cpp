#include "plugins/contract/HostCall.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/timerfd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "base/Utf8.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::plugins {
namespace {

constexpr int kReadsAtOnce = 64;

// Why a file that was mapped into memory may have ended the process.
QString FileDefect(const QString& path) {
  try {
    return ModuleFile::Open(path).Defect();
  } catch (const ModuleError& error) {
    return error.Description();
  }
}

}  // namespace

HostCall::HostCall(const QString& program, const HostRequest& request, QString module, std::chrono::milliseconds limit)
    : module_(std::move(module)),
      path_(FromUtf8(request.texts.front())),
      limit_(limit),
      id_(request.id),
      process_(program, {}),
      watch_(epoll_create1(EPOLL_CLOEXEC)),
      timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      output_(module_),
      outgoing_(FrameOf(request)) {
  if (!watch_ || !timer_ || process_.EndWatch() < 0) {
    throw ModuleError(QStringLiteral("The process for the module %1 cannot be watched.").arg(module_));
  }
  Watch(process_.EndWatch(), EPOLLIN);
  Watch(process_.Output(), EPOLLIN);
  Watch(timer_.Get(), EPOLLIN);
  Watch(process_.Channel(), EPOLLIN | EPOLLOUT);
  StartLimit(true);
  SendRest();
}

void HostCall::Watch(int descriptor, unsigned events) const {
  epoll_event event{};
  event.events = events;
  if (epoll_ctl(watch_.Get(), EPOLL_CTL_ADD, descriptor, &event) == 0) return;
  epoll_ctl(watch_.Get(), events != 0 ? EPOLL_CTL_MOD : EPOLL_CTL_DEL, descriptor, &event);
}

void HostCall::StartLimit(bool running) const {
  itimerspec time{};
  if (running) {
    time.it_value.tv_sec = limit_.count() / 1000;
    time.it_value.tv_nsec = limit_.count() % 1000 * 1'000'000 + 1;
  }
  timerfd_settime(timer_.Get(), 0, &time, nullptr);
}

void HostCall::SendRest() {
  while (!outgoing_.empty()) {
    const ssize_t sent = send(process_.Channel(), outgoing_.data(), outgoing_.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && errno == EAGAIN) return;
    if (sent <= 0) outgoing_.clear();  // it is gone; how it ended tells why
    outgoing_.erase(0, sent > 0 ? static_cast<std::size_t>(sent) : 0);
  }
  Watch(process_.Channel(), EPOLLIN);
}

void HostCall::Advance() {
  if (done_) return;
  // An answer that has come counts, whatever happened after it.
  const bool ended = process_.End().has_value();
  if (outputOpen_ && !output_.ReadFrom(process_.Output())) {
    outputOpen_ = false;
    Watch(process_.Output(), 0);
  }
  if (!outgoing_.empty()) SendRest();
  Receive();
  if (done_) return;
  if (ended) {
    TakeEnd();
  } else if (LimitIsOver()) {
    Fail(QStringLiteral("The module %1 did not answer within %2 seconds.")
             .arg(module_)
             .arg(static_cast<double>(limit_.count()) / 1000));
  }
}

void HostCall::Receive() {
  std::array<char, 65536> bytes;
  for (int i = 0; i < kReadsAtOnce && !done_; ++i) {
    const ssize_t size = recv(process_.Channel(), bytes.data(), bytes.size(), 0);
    if (size < 0 && errno == EINTR) continue;
    if (size == 0 || (size < 0 && errno != EAGAIN)) Watch(process_.Channel(), 0);  // its end says the rest
    if (size <= 0) return;
    frames_.Add({bytes.data(), static_cast<std::size_t>(size)});
    while (auto content = done_ ? std::nullopt : frames_.Next()) {
      if (const auto reply = ReadReply(*content)) {
        Take(*reply);
      } else {
        Fail(QStringLiteral("The module %1 answered with what cannot be understood.").arg(module_));
      }
    }
    if (!done_ && frames_.Broken()) {
      Fail(QStringLiteral("The module %1 answered with what cannot be understood.").arg(module_));
    }
  }
}

void HostCall::Take(const HostReply& reply) {
  switch (reply.word) {
    case HostWord::DialogOpened:
    case HostWord::DialogClosed:
      dialogUp_ = reply.word == HostWord::DialogOpened;
      StartLimit(!dialogUp_);
      return;
    case HostWord::LogLine:
      output_.Log(reply.result, reply.texts.front());
      return;
    case HostWord::Stuck:  // these are a worker's words
    case HostWord::TimedOut:
    case HostWord::Stepped:
      return;
    case HostWord::Failed:
      Fail(FromUtf8(reply.texts.front()));
      return;
    case HostWord::Overrun:
      Fail(QStringLiteral("The module %1 wrote past the end of a text and was ended.").arg(module_));
      return;
    case HostWord::Answered:
      if (reply.id != id_) return;
      reply_ = reply;
      done_ = true;
      process_.Kill();
  }
}

void HostCall::TakeEnd() {
  const HostEnd end = process_.End().value_or(HostEnd{});
  const QString defect = end.bySignal && end.number == SIGBUS ? FileDefect(path_) : QString();
  Fail(EndSentence(module_, end) + (defect.isEmpty() ? QString() : u' ' + defect));
}

bool HostCall::LimitIsOver() const {
  std::uint64_t times = 0;
  return read(timer_.Get(), &times, sizeof(times)) == sizeof(times);
}

void HostCall::Cancel() {
  if (!done_) Fail(QStringLiteral("The call of the module %1 was cancelled.").arg(module_));
}

void HostCall::Fail(const QString& sentence) {
  failure_ = sentence;
  done_ = true;
  process_.Kill();
}

HostReply HostCall::Result() const {
  if (!failure_.isEmpty()) throw ModuleError(failure_);
  if (!done_) throw ModuleError(QStringLiteral("The call of the module %1 has not ended.").arg(module_));
  return reply_;
}

}  // namespace quarl::plugins
