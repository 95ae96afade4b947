#include "netscan/api/EchoHelper.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;
constexpr auto kStartLimit = 5s;

void WaitFor(int descriptor, std::chrono::milliseconds atMost) {
  pollfd wanted{descriptor, POLLIN, 0};
  poll(&wanted, 1, static_cast<int>(atMost.count()));
}

// Starts the program with the descriptor as its input and output. -1 when it cannot be started.
pid_t Spawn(const std::string& program, int descriptor) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, descriptor, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, descriptor, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  std::string name = "quarl-echo";
  std::array<char*, 2> arguments{name.data(), nullptr};
  pid_t process = -1;
  if (posix_spawn(&process, program.c_str(), &actions, &attributes, arguments.data(), environ) != 0) process = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

}  // namespace

std::unique_ptr<EchoHelper> EchoHelper::Start(const std::string& program) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return nullptr;
  const pid_t process = Spawn(program, ends[1]);
  close(ends[1]);
  if (process < 0) {
    close(ends[0]);
    return nullptr;
  }
  std::unique_ptr<EchoHelper> helper(new EchoHelper(ends[0], process));
  if (!helper->AwaitReady()) helper.reset();
  return helper;
}

EchoHelper::EchoHelper(int descriptor, pid_t process)
    : descriptor_(descriptor), process_(process), pace_(EchoPace::Clock::now()) {}

EchoHelper::~EchoHelper() {
  close(descriptor_);
  kill(process_, SIGKILL);  // it keeps nothing; at the end of its input it would go by itself
  while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

bool EchoHelper::AwaitReady() {
  const auto limit = EchoPace::Clock::now() + kStartLimit;
  while (!ended_ && !lines_.HasNext() && EchoPace::Clock::now() < limit) {
    WaitFor(descriptor_, 100ms);
    ReadLines();
  }
  return lines_.Next() == kEchoReady;
}

void EchoHelper::ReadLines() {
  std::array<char, 4096> buffer;
  const ssize_t size = recv(descriptor_, buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (size > 0) ended_ = !lines_.Add({buffer.data(), static_cast<std::size_t>(size)});
  if (size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR)) ended_ = true;
}

bool EchoHelper::Send(std::uint16_t sequence, in_addr_t address) {
  const auto now = EchoPace::Clock::now();
  if (pace_.Until(now) > EchoPace::Clock::duration::zero()) return false;
  const std::string line = RequestLine({sequence, address}) + '\n';
  const ssize_t size = send(descriptor_, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return false;
  if (size != static_cast<ssize_t>(line.size())) refused_.push_back({sequence, address, EchoStatus::GeneralFailure});
  pace_.Take(now);
  return true;
}

std::optional<EchoAnswer> EchoHelper::Receive() {
  if (!refused_.empty()) {
    const EchoAnswer answer = refused_.front();
    refused_.pop_front();
    return answer;
  }
  if (!lines_.HasNext() && !ended_) ReadLines();
  const auto line = lines_.Next();
  return line ? ReadAnswerLine(*line) : std::nullopt;
}

void EchoHelper::Wait(std::chrono::milliseconds atMost) {
  if (!refused_.empty() || lines_.HasNext()) return;
  WaitFor(ended_ ? -1 : descriptor_, atMost);  // poll() takes -1 for no descriptor and just waits
}

}  // namespace quarl::netscan
