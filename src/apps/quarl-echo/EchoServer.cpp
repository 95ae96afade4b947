#include "apps/quarl-echo/EchoServer.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quarl::netscan {
namespace {

bool WriteAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t size = write(STDOUT_FILENO, text.data(), text.size());
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) text.remove_prefix(static_cast<std::size_t>(size));
  }
  return true;
}

}  // namespace

EchoServer::EchoServer(EchoSocket& socket) : socket_(socket), pace_(EchoPace::Clock::now()), asked_(kSequences) {}

bool EchoServer::Serve() {
  if (!WriteAll(std::string(kEchoReady) + '\n')) return false;
  while (true) {
    if (SendRequests() == Input::Refused || !PassAnswers()) return false;
    // While requests wait for their turn nothing more is read.
    const bool full = held_ || lines_.HasNext();
    std::array<pollfd, 2> wanted{pollfd{full ? -1 : STDIN_FILENO, POLLIN, 0}, pollfd{socket_.Descriptor(), POLLIN, 0}};
    if (poll(wanted.data(), wanted.size(), full ? LongestWaitMs() : -1) < 0 && errno != EINTR) return false;
    if (wanted[0].revents == 0) continue;
    if (const Input input = ReadInput(); input != Input::Open) return input == Input::Ended;
  }
}

int EchoServer::LongestWaitMs() const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(pace_.Until(EchoPace::Clock::now()));
  return std::max(1, static_cast<int>(left.count()));
}

EchoServer::Input EchoServer::SendRequests() {
  while (held_ || lines_.HasNext()) {
    if (!held_) {
      const auto line = lines_.Next();
      held_ = line ? ReadRequestLine(*line) : std::nullopt;
      if (!held_) return Input::Refused;
    }
    const auto now = EchoPace::Clock::now();
    if (pace_.Until(now) > EchoPace::Clock::duration::zero()) return Input::Open;
    if (!socket_.Send(held_->sequence, held_->address)) return Input::Open;
    pace_.Take(now);
    asked_[held_->sequence] = held_->address;
    open_.set(held_->sequence);
    held_.reset();
  }
  return Input::Open;
}

EchoServer::Input EchoServer::ReadInput() {
  std::array<char, 4096> buffer;
  const ssize_t size = read(STDIN_FILENO, buffer.data(), buffer.size());
  if (size == 0) return Input::Ended;
  if (size < 0) return errno == EINTR || errno == EAGAIN ? Input::Open : Input::Refused;
  return lines_.Add({buffer.data(), static_cast<std::size_t>(size)}) ? Input::Open : Input::Refused;
}

bool EchoServer::PassAnswers() {
  std::string text;
  while (const auto answer = socket_.Receive()) {
    if (!open_.test(answer->sequence) || !AnswersFor(answer->address, asked_[answer->sequence])) continue;
    open_.reset(answer->sequence);
    text += AnswerLine(*answer) + '\n';
  }
  return WriteAll(text);
}

}  // namespace quarl::netscan
