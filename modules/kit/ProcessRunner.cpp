#include "kit/ProcessRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/ProcessFiles.h"
#include "base/SpawnPlan.h"
#include "kit/Leftovers.h"
#include "kit/Pace.h"

namespace quarl::kit {
namespace {

/// For the end of a program that was killed, and of what one has left behind.
constexpr std::chrono::milliseconds kFarewell{100};
/// For which nobody looks at what a program writes.
constexpr std::chrono::milliseconds kQuick{50};
/// Programs that were killed and have not ended, with which no other is started.
constexpr std::size_t kMostHeld = 32;

/// When the next program of this process may start.
Pace::Clock::duration NextStart() {
  static std::mutex& mutex = *new std::mutex;  // never destroyed, as the leftovers
  static Pace& pace = *new Pace;
  const std::lock_guard lock(mutex);
  return pace.Next(Pace::Clock::now());
}

std::system_error SystemError(const char* what) {
  return {errno, std::generic_category(), what};
}

/// Above the three standard streams, which the child's own take the place of.
Descriptor OutOfTheWay(int descriptor) {
  Descriptor raised = Raised(Descriptor(descriptor), STDERR_FILENO + 1);
  if (!raised) throw SystemError("A pipe could not be made");
  return raised;
}

struct Pipe {
  Descriptor reading, writing;
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw SystemError("A pipe could not be made");
    reading = OutOfTheWay(ends[0]);
    writing = OutOfTheWay(ends[1]);
    if (::fcntl(reading.Get(), F_SETFL, O_NONBLOCK) != 0) throw SystemError("A pipe could not be made");
  }
};

std::vector<std::string> EnvironmentOf(const ProcessRequest& request) {
  std::vector<std::string> result;
  const auto handOn = [&](std::string_view name, std::string_view variable) {
    const auto replaces = [&](const auto& own) { return own.first == name; };
    if (std::any_of(request.environment.begin(), request.environment.end(), replaces)) return;
    result.emplace_back(variable);
  };
  if (request.handedOn) {
    for (const std::string& name : *request.handedOn) {
      const char* const value = std::getenv(name.c_str());
      if (value != nullptr) handOn(name, name + '=' + value);
    }
  } else {
    for (char** entry = environ; *entry != nullptr; ++entry) {
      const std::string_view variable = *entry;
      handOn(variable.substr(0, variable.find('=')), variable);
    }
  }
  for (const auto& [name, value] : request.environment) result.push_back(name + '=' + value);
  return result;
}

std::string FaultOfStart(const std::string& program, int code) {
  switch (code) {
    case ENOENT:
      return program + " does not exist, or the interpreter that its first line names does not.";
    case EACCES:
      return program + " may not be run: it is no file or is not marked as executable.";
    case ENOEXEC:
      return program + " is no program; a script needs a first line such as #!/bin/sh.";
    case E2BIG:
      return "The arguments and the environment are too long for " + program + '.';
    default:
      return program + " could not be started: " + std::generic_category().message(code) + '.';
  }
}

ProcessResult Failed(std::string fault) {
  ProcessResult result;
  result.fault = std::move(fault);
  return result;
}

/// What exec would cut or misread.
std::string FaultOf(const ProcessRequest& request) {
  if (!request.program.starts_with('/')) return "The path of the program must begin with a slash.";
  const auto hasNul = [](const std::string& text) { return text.find('\0') != std::string::npos; };
  bool nul = hasNul(request.program) || std::any_of(request.arguments.begin(), request.arguments.end(), hasNul);
  for (const auto& [name, value] : request.environment) nul = nul || hasNul(name) || hasNul(value);
  return nul ? "A NUL character cannot be handed to a program." : "";
}

/// A started child, known to the leftovers. Kills it with its group when it goes out of scope unreaped.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid), exit_(ProcessDescriptor(pid)) {
    if (exit_) return;
    const std::system_error error = SystemError("A program cannot be waited for");
    Abandon();
    throw error;
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (pid_ > 0) Abandon();
  }
  int ExitDescriptor() const { return exit_.Get(); }
  /// The group exists at least until the child is reaped.
  void Kill() const { ::kill(-pid_, SIGKILL); }
  enum class Reaped { Yes, Elsewhere, NotYet };
  /// Takes the wait status of a child that has ended.
  Reaped Reap(int& status) {
    const pid_t got = ::waitpid(pid_, &status, WNOHANG);
    if (got == 0) return Reaped::NotYet;
    Leftovers::Instance().Forget(std::exchange(pid_, 0));
    return got > 0 ? Reaped::Yes : Reaped::Elsewhere;
  }

 private:
  void Abandon() {
    Kill();
    Leftovers::Instance().Abandon(std::exchange(pid_, 0));
  }

  pid_t pid_;
  Descriptor exit_;
};

/// One stream of the child and what is kept of it.
class Stream {
 public:
  Stream(int descriptor, std::string& text, std::size_t longest, bool& cut)
      : descriptor_(descriptor), text_(text), longest_(longest), cut_(cut) {}
  /// poll() passes over it once it has ended.
  int Descriptor() const { return descriptor_; }
  /// Reads what is there. A child that never stops writing gets no more than one turn.
  void Read() {
    std::array<char, 65536> part;
    const ssize_t count = descriptor_ < 0 ? 0 : ::read(descriptor_, part.data(), part.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) descriptor_ = -1;
    const auto got = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    const std::size_t kept = std::min(got, longest_ - text_.size());
    text_.append(part.data(), kept);
    cut_ = cut_ || kept < got;
  }

 private:
  int descriptor_;
  std::string& text_;
  std::size_t longest_;
  bool& cut_;
};

/// What both streams of the child and its end are waited for with. A stream that has ended is waited for no more.
class Events {
 public:
  Events(const Child& child, Stream& output, Stream& errors)
      : exit_(child.ExitDescriptor()), streams_{&output, &errors}, poll_(::epoll_create1(EPOLL_CLOEXEC)) {
    bool ready = bool(poll_) && Add(exit_);
    for (const Stream* stream : streams_) ready = ready && Add(stream->Descriptor());
    if (!ready) throw SystemError("A program cannot be waited for");
  }
  int Descriptor() const { return poll_.Get(); }
  /// Reads what has come; whether the child has ended.
  bool Take() {
    std::array<epoll_event, 3> came{};
    const int count = ::epoll_wait(poll_.Get(), came.data(), static_cast<int>(came.size()), 0);
    bool ended = false;
    for (int i = 0; i < count; ++i) {
      const int descriptor = came[static_cast<std::size_t>(i)].data.fd;
      ended = ended || descriptor == exit_;
      for (Stream* stream : streams_) {
        if (stream->Descriptor() == descriptor) Read(*stream);
      }
    }
    return ended;
  }

 private:
  bool Add(int descriptor) const {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    return ::epoll_ctl(poll_.Get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
  }
  void Read(Stream& stream) const {
    const int descriptor = stream.Descriptor();
    stream.Read();
    if (stream.Descriptor() < 0) ::epoll_ctl(poll_.Get(), EPOLL_CTL_DEL, descriptor, nullptr);
  }

  int exit_;
  std::array<Stream*, 2> streams_;
  quarl::Descriptor poll_;
};

/// Waits until the child has ended, and reads both streams if that takes a while. What else ended it, or Exited.
Task<ProcessResult::End> Follow(const Child& child, Stream& output, Stream& errors, const Deadline& end,
                                const bool& tooLong) {
  // Most programs are quick and write less than a pipe holds: one waking is enough for them.
  const Deadline quick(std::min(end.Left(), kQuick));
  if (co_await Ready(child.ExitDescriptor(), POLLIN, quick) != 0) co_return ProcessResult::End::Exited;
  Events events(child, output, errors);
  while (!events.Take()) {
    if (tooLong) co_return ProcessResult::End::TooLong;
    if (end.IsOver()) co_return ProcessResult::End::TimedOut;
    co_await Ready(events.Descriptor(), POLLIN, end);
  }
  co_return ProcessResult::End::Exited;
}

/// Takes the end of a child that has ended or was killed.
Task<void> Reap(Child& child, const ProcessRequest& request, ProcessResult& result) {
  if (result.end != ProcessResult::End::Exited) co_await Ready(child.ExitDescriptor(), POLLIN, Deadline(kFarewell));
  int status = 0;
  const Child::Reaped reaped = child.Reap(status);
  result.remains = reaped == Child::Reaped::NotYet;
  if (result.end != ProcessResult::End::Exited) co_return;
  if (reaped != Child::Reaped::Yes) {
    result.end = ProcessResult::End::NotStarted;
    result.fault = "How " + request.program + " ended is not known.";
    co_return;
  }
  result.end = WIFSIGNALED(status) ? ProcessResult::End::Killed : ProcessResult::End::Exited;
  result.code = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

Task<ProcessResult> Watch(Child& child, const Pipe& output, const Pipe& errors, const ProcessRequest& request) {
  const auto begin = std::chrono::steady_clock::now();
  const Deadline end(request.limit);
  ProcessResult result;
  Stream outputStream(output.reading.Get(), result.output, request.longestOutput, result.cut);
  Stream errorStream(errors.reading.Get(), result.errors, request.longestOutput, result.cut);
  const bool never = false;
  result.end = co_await Follow(child, outputStream, errorStream, end, request.endWhenLong ? result.cut : never);
  result.duration = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
  // What the pipe still holds, one pipe's capacity, was written before the end.
  outputStream.Read();
  errorStream.Read();
  if (request.endLeftovers || result.end != ProcessResult::End::Exited) child.Kill();
  co_await Reap(child, request, result);
  co_return result;
}

pid_t Start(const ProcessRequest& request, const Pipe& output, const Pipe& errors, int& code) {
  std::vector<std::string> words{request.program};
  words.insert(words.end(), request.arguments.begin(), request.arguments.end());
  std::vector<std::string> environment = EnvironmentOf(request);
  const SpawnPlan plan({{output.writing.Get(), STDOUT_FILENO}, {errors.writing.Get(), STDERR_FILENO}});
  return Leftovers::Instance().Start([&] {
    pid_t child = -1;
    code = plan.Start(std::move(words), std::move(environment), child);
    return code == 0 ? child : -1;
  });
}

Task<ProcessResult> Run(const ProcessRequest& request) {
  if (std::string fault = FaultOf(request); !fault.empty()) co_return Failed(std::move(fault));
  if (Leftovers::Instance().CountAbandoned() >= kMostHeld) {
    co_return Failed(request.program + " is not started: " + std::to_string(kMostHeld) +
                     " programs of this process were killed and do not end.");
  }
  const auto wait = std::chrono::floor<std::chrono::milliseconds>(NextStart());
  if (wait.count() > 0) co_await Ready(-1, 0, Deadline(wait));
  Pipe output, errors;
  int code = 0;
  const pid_t pid = Start(request, output, errors, code);
  if (code != 0) co_return Failed(FaultOfStart(request.program, code));
  Child child(pid);
  output.writing.Close();
  errors.writing.Close();
  ProcessResult result = co_await Watch(child, output, errors, request);
  co_return result;
}

}  // namespace

Task<ProcessResult> RunProcessInSteps(ProcessRequest request) {
  if (!request.endLeftovers) {
    ProcessResult result = co_await Run(request);
    co_return result;
  }
  Leftovers::Mark mark;
  request.environment.push_back(mark.Variable());
  ProcessResult result = co_await Run(request);
  mark.Release();
  co_await Leftovers::Instance().End(kFarewell);
  co_return result;
}

ProcessResult RunProcess(const ProcessRequest& request) {
  return Steps<ProcessResult>(RunProcessInSteps(request)).Finish();
}

std::string FirstLine(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\v\f";
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    if (const std::size_t first = line.find_first_not_of(kBlanks); first != std::string::npos) {
      return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
    }
    at = end + 1;
  }
  return {};
}

}  // namespace quarl::kit
