#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

#include "AnswerRoom.h"
#include "HelperLibrary.h"
#include "HostChannel.h"

namespace quarl::host {

/// Makes the checks of modules that make them in steps, all on the one thread that also reads the channel. Answers are
/// held for a moment and sent together. A step that does not come back is told of and ends the process.
class StepLoop {
 public:
  /// Alive until the process ends, as the channel. Throws std::system_error.
  explicit StepLoop(HostChannel& channel);
  /// So many checks will be on their way at once. What they start has this process's limit of descriptors, so it is
  /// raised only where they need it.
  static void MakeRoom(int checks);
  StepLoop(const StepLoop&) = delete;
  StepLoop& operator=(const StepLoop&) = delete;

  /// Makes the first step of a check.
  /// @param steps FindSteps()'s of the module
  void Begin(const HelperLibrary& helper, const void* steps, plugins::HostRequest request);
  /// Waits until there is something to do and makes the steps that are due. True: the channel has something to read.
  bool Turn();
  /// Sends what was answered when that has waited long enough for company, or less company is to come than is there.
  /// False when the other end has gone.
  bool FlushDue();

 private:
  using Clock = std::chrono::steady_clock;

  struct Check {
    plugins::HostRequest request;
    QuarlCheckRequest question{};
    const void* steps = nullptr;
    QuarlCheckWait wait{};
    Clock::time_point end;  ///< its time limit, and a little more
    Clock::time_point due;
    int armed = -1;  ///< the descriptor whose event makes a step
  };
  void Step(std::uint64_t key, short came);
  int16_t Call(Check& check, QuarlCheckResult& result);
  void Await(std::uint64_t key, Check& check);
  /// 0, or why the descriptor cannot be waited for.
  int Arm(std::uint64_t key, Check& check) const;
  void Disarm(Check& check) const;
  void End(std::uint64_t key, const plugins::HostReply& reply);
  /// Ends a check that still waits, after its module has given back what it holds.
  void GiveUp(std::uint64_t key, Check& check, const plugins::HostReply& reply);
  bool Flush();
  void Say(const plugins::HostReply& reply);
  void StepDueOnes();
  int UntilNextMs() const;
  [[noreturn]] void Watch();

  HostChannel& channel_;
  int poll_ = -1;
  const HelperLibrary* helper_ = nullptr;  ///< the one of test modules
  decltype(&CheckStep) step_ = nullptr;
  bool watched_ = false;
  std::uint64_t lastKey_ = 0;  ///< never used twice, so that a late event means nobody
  std::unordered_map<std::uint64_t, Check> checks_;
  std::set<std::pair<Clock::time_point, std::uint64_t>> due_;
  CheckRooms rooms_;
  std::string answers_;
  std::size_t answersHeld_ = 0;
  Clock::time_point answersSince_;           ///< when the first of them was made
  std::atomic<std::uint64_t> stepping_ = 0;  ///< counts beginnings and ends: odd during a step
  std::atomic<std::uint32_t> request_ = 0;   ///< of the step
};

}  // namespace quarl::host
