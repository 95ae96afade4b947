#include "kit/ProcessRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>
#include <tuple>

#include "base/ProcessFiles.h"
#include "base/SpawnPlan.h"
#include "kit/Leftovers.h"

namespace quarl::kit {
namespace {

using Clock = std::chrono::steady_clock;

/// For the end of what a program has left behind.
constexpr std::chrono::milliseconds kFarewell{200};

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
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string variable = *entry;
    const std::string name = variable.substr(0, variable.find('='));
    const auto replaces = [&](const auto& own) { return own.first == name; };
    if (std::any_of(request.environment.begin(), request.environment.end(), replaces)) continue;
    const auto& kept = request.handedOn;
    if (!kept || std::find(kept->begin(), kept->end(), name) != kept->end()) result.push_back(variable);
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

/// A started child, known to the leftovers. Ends it with its group when it goes out of scope unreaped.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid), exit_(ProcessDescriptor(pid)) {
    if (exit_) return;
    const std::system_error error = SystemError("A program cannot be waited for");
    Kill();
    std::ignore = Reap();
    throw error;
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (pid_ > 0) Kill();
    if (pid_ > 0) std::ignore = Reap();
  }
  int ExitDescriptor() const { return exit_.Get(); }
  /// The group exists at least until the child is reaped.
  void Kill() const { ::kill(-pid_, SIGKILL); }
  /// Waits; the wait status, or nothing when somebody else has taken it.
  std::optional<int> Reap() {
    int status = 0;
    pid_t got = -1;
    while ((got = ::waitpid(pid_, &status, 0)) < 0 && errno == EINTR) continue;
    Leftovers::Instance().Forget(std::exchange(pid_, 0));
    return got > 0 ? std::optional(status) : std::nullopt;
  }

 private:
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
    std::array<char, 65536> part{};
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

/// Reads both streams until the child has ended. What else ended it, or Exited.
ProcessResult::End Follow(const Child& child, Stream& output, Stream& errors, Clock::time_point end,
                          const bool& tooLong) {
  for (;;) {
    std::array<pollfd, 3> waits{
        {{output.Descriptor(), POLLIN, 0}, {errors.Descriptor(), POLLIN, 0}, {child.ExitDescriptor(), POLLIN, 0}}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    if (left <= 0) return ProcessResult::End::TimedOut;
    if (tooLong) return ProcessResult::End::TooLong;
    if (::poll(waits.data(), waits.size(), static_cast<int>(std::min<long long>(left, 60000))) < 0) continue;
    if (waits[0].revents != 0) output.Read();
    if (waits[1].revents != 0) errors.Read();
    if (waits[2].revents != 0) return ProcessResult::End::Exited;
  }
}

ProcessResult Watch(Child& child, const Pipe& output, const Pipe& errors, const ProcessRequest& request) {
  const Clock::time_point end = Clock::now() + request.limit;
  ProcessResult result;
  Stream outputStream(output.reading.Get(), result.output, request.longestOutput, result.cut);
  Stream errorStream(errors.reading.Get(), result.errors, request.longestOutput, result.cut);
  const bool never = false;
  result.end = Follow(child, outputStream, errorStream, end, request.endWhenLong ? result.cut : never);
  if (result.end != ProcessResult::End::Exited) return result;
  // What the pipe still holds, one pipe's capacity, was written before the end.
  outputStream.Read();
  errorStream.Read();
  if (request.endLeftovers) child.Kill();
  const std::optional<int> status = child.Reap();
  if (!status) return Failed("How " + request.program + " ended is not known.");
  result.end = WIFSIGNALED(*status) ? ProcessResult::End::Killed : ProcessResult::End::Exited;
  result.code = WIFSIGNALED(*status) ? WTERMSIG(*status) : WEXITSTATUS(*status);
  return result;
}

ProcessResult Run(const ProcessRequest& request) {
  if (std::string fault = FaultOf(request); !fault.empty()) return Failed(std::move(fault));
  Pipe output, errors;
  std::vector<std::string> words{request.program};
  words.insert(words.end(), request.arguments.begin(), request.arguments.end());
  std::vector<std::string> environment = EnvironmentOf(request);
  const SpawnPlan plan({{output.writing.Get(), STDOUT_FILENO}, {errors.writing.Get(), STDERR_FILENO}});
  int code = 0;
  const pid_t pid = Leftovers::Instance().Start([&] {
    pid_t child = -1;
    code = plan.Start(std::move(words), std::move(environment), child);
    return code == 0 ? child : -1;
  });
  if (code != 0) return Failed(FaultOfStart(request.program, code));
  Child child(pid);
  output.writing.Close();
  errors.writing.Close();
  return Watch(child, output, errors, request);
}

/// Ends what a program has left behind once it has been waited for.
struct Farewell {
  const std::string& mark;
  ~Farewell() { Leftovers::Instance().End(mark, kFarewell); }
};

}  // namespace

ProcessResult RunProcess(const ProcessRequest& request) {
  if (!request.endLeftovers) return Run(request);
  auto mark = Leftovers::Instance().NewMark();
  ProcessRequest marked = request;
  marked.environment.push_back(mark);
  const Farewell farewell{mark.second};
  return Run(marked);
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
