#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <csignal>
#include <fstream>
#include <memory>
#include <thread>

#include "kit/Pace.h"
#include "kit/ProcessRunner.h"
#include "support/Programs.h"

namespace quarl::kit {
namespace {

using End = ProcessResult::End;
using ::quarl::testing::CountProcesses;

/// Runs lines of a shell, which this test asks for by its path like any other program.
ProcessRequest Shell(const std::string& script, std::vector<std::string> arguments = {}) {
  ProcessRequest request{"/bin/sh", {"-c", script, "sh"}};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  return request;
}

TEST(ProcessRunnerTest, TellsHowAProgramEndedAndWhatItWrote) {
  const struct {
    const char* name;
    ProcessRequest request;
    End end;
    int code;
    const char *output, *errors, *fault;
  } cases[] = {{"Silent", {"/bin/true"}, End::Exited, 0, "", "", ""},
               {"Code", Shell("echo out; echo err >&2; exit 42"), End::Exited, 42, "out\n", "err\n", ""},
               {"Signal", Shell("kill -TERM $$"), End::Killed, SIGTERM, "", "", ""},
               {"ArgumentsAsTheyAre", Shell("printf '<%s>' \"$@\"", {"a b", "$HOME", "; exit 3", "*", "", "\xc3\xa4"}),
                End::Exited, 0, "<a b><$HOME><; exit 3><*><><\xc3\xa4>", "", ""},
               {"EmptyInput", Shell("cat; echo end"), End::Exited, 0, "end\n", "", ""},
               {"Missing", {"/nonexistent/program"}, End::NotStarted, 0, "", "", "does not exist"},
               {"NoProgram", {"/etc/passwd"}, End::NotStarted, 0, "", "", "may not be run"},
               {"Folder", {"/tmp"}, End::NotStarted, 0, "", "", "may not be run"},
               {"RelativePath", {"true"}, End::NotStarted, 0, "", "", "must begin with a slash"},
               {"NulInside", Shell("true", {std::string("a\0b", 3)}), End::NotStarted, 0, "", "", "NUL"},
               {"TooLong", Shell("true", {std::string(1 << 20, 'x')}), End::NotStarted, 0, "", "", "too long"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const ProcessResult result = RunProcess(each.request);
    EXPECT_EQ(result.end, each.end);
    EXPECT_EQ(result.code, each.code);
    EXPECT_EQ(result.output, each.output);
    EXPECT_EQ(result.errors, each.errors);
    EXPECT_NE(result.fault.find(each.fault), std::string::npos) << result.fault;
    EXPECT_EQ(result.fault.empty(), each.end != End::NotStarted);
    EXPECT_FALSE(result.cut);
  }
}

TEST(ProcessRunnerTest, TheEnvironmentIsThisOneWithTheGivenVariables) {
  ::setenv("QUARL_HANDED_ON", "kept", 1);
  ::setenv("QUARL_REPLACED", "old", 1);
  ProcessRequest request = Shell("echo \"$QUARL_HANDED_ON $QUARL_REPLACED $QUARL_NEW\"; env | grep -c QUARL_REPLACED");
  request.environment = {{"QUARL_REPLACED", "new"}, {"QUARL_NEW", "a=b\nc"}};
  EXPECT_EQ(RunProcess(request).output, "kept new a=b\nc\n1\n");
}

TEST(ProcessRunnerTest, OpenFilesAndSignalsAreNotHandedOn) {
  QFile open(QStringLiteral("/etc/passwd"));
  ASSERT_TRUE(open.open(QIODevice::ReadOnly));
  const int inherited = ::dup(open.handle());  // without the flag that closes it
  const auto before = std::signal(SIGUSR1, SIG_IGN);
  const ProcessResult result = RunProcess(Shell(
      "for f in 0 1 2 $1; do [ -e /proc/$$/fd/$f ] && echo $f; done; kill -USR1 $$", {std::to_string(inherited)}));
  std::signal(SIGUSR1, before);
  ::close(inherited);
  EXPECT_EQ(result.output, "0\n1\n2\n");
  EXPECT_EQ(result.end, End::Killed);
  EXPECT_EQ(result.code, SIGUSR1);
}

TEST(ProcessRunnerTest, KeepsTheBeginningOfLongOutputOfBothStreams) {
  ProcessRequest request = Shell("head -c 3000000 /dev/zero | tr '\\0' o; head -c 3000000 /dev/zero | tr '\\0' e >&2");
  request.longestOutput = 1000;
  const ProcessResult result = RunProcess(request);
  EXPECT_EQ(result.end, End::Exited);
  EXPECT_EQ(result.output, std::string(1000, 'o'));
  EXPECT_EQ(result.errors, std::string(1000, 'e'));
  EXPECT_TRUE(result.cut);
}

TEST(ProcessRunnerTest, ATimeOutEndsTheWholeGroup) {
  const QByteArray mark = "4321." + QByteArray::number(::getpid());
  ProcessRequest request =
      Shell("trap '' TERM INT HUP; echo begun; sleep " + mark.toStdString() + " & sleep " + mark.toStdString());
  request.limit = std::chrono::milliseconds(300);
  const ProcessResult result = RunProcess(request);
  EXPECT_EQ(result.end, End::TimedOut);
  EXPECT_EQ(result.output, "begun\n");
  // The grandchildren belong to nobody here, so that their end shows in /proc only.
  for (int i = 0; i < 500 && CountProcesses(mark) > 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(CountProcesses(mark), 0);
}

TEST(ProcessRunnerTest, DoesNotWaitForWhatAProgramLeavesBehind) {
  const ProcessResult result = RunProcess(Shell("echo said; sleep 4000 & echo $!"));
  EXPECT_EQ(result.end, End::Exited);
  ASSERT_EQ(result.output.substr(0, 5), "said\n");
  EXPECT_EQ(::kill(std::stoi(result.output.substr(5)), SIGKILL), 0);
}

TEST(ProcessRunnerTest, ManyThreadsRunProgramsAtOnce) {
  std::vector<std::thread> threads;
  std::vector<int> wrong(8, 0);
  for (std::size_t i = 0; i < wrong.size(); ++i) {
    threads.emplace_back([&wrong, i] {
      const std::string text = std::to_string(i);
      for (int round = 0; round < 20; ++round) {
        const ProcessResult result = RunProcess(Shell("echo $1; exit $1", {text}));
        if (result.code != static_cast<int>(i) || result.output != text + "\n") ++wrong[i];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(8, 0));
}

TEST(ProcessRunnerTest, StartsOfABurstOfProgramsLieEvenlyInAStretch) {
  Pace pace;
  Pace::Clock::time_point now{std::chrono::hours(1)};
  for (const int programs : {1, 4, 5, 15, 64, 64, 300, 1, 40}) {
    SCOPED_TRACE(programs);
    std::vector<int> quarters(4, 0);
    for (int program = 0; program < programs; ++program, now += std::chrono::microseconds(1)) {
      const Pace::Clock::duration wait = pace.Next(now);
      ASSERT_GE(wait.count(), 0);
      ASSERT_LT(wait, Pace::kStretch);
      ++quarters.at(static_cast<std::size_t>(wait * 4 / Pace::kStretch));
    }
    const int spread = std::max(0, programs - 4);
    EXPECT_GE(quarters[0], std::min(programs, 4));
    quarters[0] -= std::min(programs, 4);
    for (const int each : quarters) EXPECT_NEAR(each, spread / 4, 1);
    now += Pace::kGap;
  }
  for (int program = 0; program < 100; ++program, now += Pace::kGap) EXPECT_EQ(pace.Next(now).count(), 0);
}

/// Drives tasks on this thread until all have ended.
std::vector<ProcessResult> Drive(std::vector<std::unique_ptr<Steps<ProcessResult>>>& runs) {
  std::vector<ProcessResult> results(runs.size());
  std::vector<short> came(runs.size(), 0);
  for (std::size_t left = runs.size(); left > 0;) {
    for (std::size_t i = 0; i < runs.size(); ++i) {
      if (!runs[i]) continue;
      const Wait& wait = runs[i]->Waiting();
      pollfd wanted{wait.descriptor, wait.events, 0};
      if (::poll(&wanted, 1, 0) == 0 && !wait.deadline.IsOver()) continue;
      if (!runs[i]->Go(wanted.revents)) continue;
      results[i] = runs[i]->Result();
      runs[i].reset();
      --left;
    }
  }
  return results;
}

TEST(ProcessRunnerTest, ManyProgramsRunInStepsOfOneThread) {
  const struct {
    const char* script;
    End end;
    int code;
    std::size_t output;
  } cases[] = {{"echo quick; exit 3", End::Exited, 3, 6},
               {"sleep 0.2; echo slow", End::Exited, 0, 5},
               {"exec >&-; exec 2>&-; sleep 0.2; exit 4", End::Exited, 4, 0},
               {"head -c 200000 /dev/zero", End::Exited, 0, 65536},
               {"echo begun; sleep 0.1; kill -KILL $$", End::Killed, SIGKILL, 6},
               {"trap '' TERM; echo begun; sleep 4000", End::TimedOut, 0, 6}};
  constexpr std::size_t kEach = 8;
  std::vector<std::unique_ptr<Steps<ProcessResult>>> runs;
  for (std::size_t i = 0; i < std::size(cases) * kEach; ++i) {
    ProcessRequest request = Shell(cases[i / kEach].script);
    request.limit = std::chrono::milliseconds(i / kEach == 5 ? 500 : 20000);
    runs.push_back(std::make_unique<Steps<ProcessResult>>(RunProcessInSteps(request)));
    runs.back()->Go(0);
  }
  const std::vector<ProcessResult> results = Drive(runs);
  for (std::size_t i = 0; i < results.size(); ++i) {
    SCOPED_TRACE(cases[i / kEach].script);
    EXPECT_EQ(results[i].end, cases[i / kEach].end) << results[i].fault;
    EXPECT_EQ(results[i].code, cases[i / kEach].code);
    EXPECT_EQ(results[i].output.size(), cases[i / kEach].output);
  }
}

TEST(ProcessRunnerTest, ATaskThatIsGivenUpEndsItsProgram) {
  const QByteArray mark = "4322." + QByteArray::number(::getpid());
  {
    Steps<ProcessResult> run(RunProcessInSteps(Shell("trap '' TERM; sleep " + mark.toStdString())));
    for (int i = 0; i < 500 && CountProcesses(mark) < 2; ++i) {
      ASSERT_FALSE(run.Go(0));
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(CountProcesses(mark), 2);
  }
  for (int i = 0; i < 500 && CountProcesses(mark) > 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(CountProcesses(mark), 0);
}

/// Another process that holds the end of a program back as a debugger can: the killed program stays, and nobody can
/// wait for it until this object is gone.
class Holder {
 public:
  explicit Holder(pid_t program) : pid_(::fork()) {
    if (pid_ != 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::ptrace(PTRACE_SEIZE, program, nullptr, nullptr) != 0) ::_exit(1);
    ::raise(SIGSTOP);
    ::_exit(0);
  }
  ~Holder() {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  bool Holds() const {
    int status = 0;
    return ::waitpid(pid_, &status, WUNTRACED) == pid_ && WIFSTOPPED(status);
  }

 private:
  pid_t pid_;
};

TEST(ProcessRunnerTest, AProgramThatCannotBeEndedIsToldOfAndTakenAwayLater) {
  const std::string file = ::testing::TempDir() + "held-" + std::to_string(::getpid());
  ProcessRequest request = Shell("echo $$ > $1; exec sleep 4000", {file});
  request.limit = std::chrono::milliseconds(1000);
  ProcessResult result;
  std::thread other([&] { result = RunProcess(request); });
  pid_t program = 0;
  for (int i = 0; i < 500 && program == 0; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
    std::ifstream(file) >> program;
  }
  ::unlink(file.c_str());
  auto holder = std::make_unique<Holder>(program);
  const bool held = holder->Holds();
  other.join();
  if (!held) GTEST_SKIP() << "this user may not hold another process (kernel.yama.ptrace_scope)";
  EXPECT_EQ(result.end, End::TimedOut);
  EXPECT_TRUE(result.remains);
  EXPECT_EQ(::kill(program, 0), 0);
  holder.reset();
  for (int i = 0; i < 100 && ::kill(program, 0) == 0; ++i) RunProcess({"/bin/true"});
  EXPECT_NE(::kill(program, 0), 0) << "it is still there as a zombie";
}

TEST(ProcessRunnerTest, FindsTheFirstLine) {
  EXPECT_EQ(FirstLine(""), "");
  EXPECT_EQ(FirstLine("\n \t\r\n\n"), "");
  EXPECT_EQ(FirstLine("one"), "one");
  EXPECT_EQ(FirstLine("\n\r\n  two words \r\nthree\n"), "two words");
}

}  // namespace
}  // namespace quarl::kit
