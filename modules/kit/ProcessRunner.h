#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/Steps.h"

namespace quarl::kit {

/// A program to run. It gets its arguments as they are, without any shell, an empty standard input, the default of
/// every signal, and no open file but the three standard streams.
struct ProcessRequest {
  std::string program;  ///< absolute path
  std::vector<std::string> arguments{};
  /// Name and value; they replace variables of the same name of this process.
  std::vector<std::pair<std::string, std::string>> environment{};
  /// Which of the other variables of this process are handed on; all when nothing is said.
  std::optional<std::vector<std::string>> handedOn{};
  /// From its start, before which there may be 40 ms and behind which 200 ms more: for its end and that of its
  /// leftovers.
  std::chrono::milliseconds limit{10000};
  std::size_t longestOutput = 65536;  ///< bytes that are kept of each stream; the rest is read and dropped
  bool endWhenLong = false;           ///< a stream that is longer ends the program
  /// What the program leaves behind is ended when it has ended, even in sessions of its own; see Leftovers.
  bool endLeftovers = false;
};

struct ProcessResult {
  enum class End {
    NotStarted,  ///< or how it ended is not known; fault says why
    Exited,      ///< code is the exit code
    Killed,      ///< code is the signal that ended it
    TimedOut,    ///< it was ended, with everything in its process group
    TooLong,     ///< likewise, because it wrote too much
  };
  End end = End::NotStarted;
  int code = 0;
  std::string fault;  ///< one sentence for NotStarted
  std::string output;
  std::string errors;
  std::chrono::microseconds duration{0};  ///< from its start to its end
  bool cut = false;                       ///< a stream was longer than what was kept
  bool remains = false;  ///< it was killed and still has not ended: it waits in the kernel, or another program holds it
};

/// Runs a program in a session of its own and waits until it ends or the limit is over. Of processes that it leaves
/// behind only the output up to its own end counts. May be called by many threads at once.
ProcessResult RunProcess(const ProcessRequest& request);
/// The same in steps. A task that is given up kills the program and its process group.
Task<ProcessResult> RunProcessInSteps(ProcessRequest request);

/// The first line of a text that is not blank, without the blanks around it; "" when there is none.
std::string FirstLine(const std::string& text);

}  // namespace quarl::kit
