#pragma once

#include <functional>
#include <span>
#include <stop_token>
#include <vector>

#include "netscan/api/EchoChannel.h"

namespace quarl::netscan {

/// How one echo ended, and after which time; the time of an echo without an answer is the time-out.
struct EchoResult {
  EchoStatus status = EchoStatus::TimedOut;
  std::chrono::microseconds roundTrip{0};
};

struct EchoLimits {
  static constexpr std::size_t kMaxUnderWay = 254;
  std::chrono::milliseconds timeOut{500};  ///< for each echo, from the moment it is sent
  std::size_t underWay = kMaxUnderWay;     ///< echoes without an answer at a time: 1 to kMaxUnderWay
};

/// Echoes to many hosts over one channel. Blocks its thread; one thread at a time.
class EchoSession {
 public:
  using Clock = std::chrono::steady_clock;
  using Now = std::function<Clock::time_point()>;
  /// Called on the session's thread, once an address, in the order in which the echoes end.
  using Report = std::function<void(std::size_t index, const EchoResult& result)>;

  /// @param channel must outlive the session.
  explicit EchoSession(EchoChannel& channel, Now now = &Clock::now);

  /// One echo, with the time-out of the limits.
  EchoResult Ask(in_addr_t address, const EchoLimits& limits = {});
  /// One echo to each address (network byte order; one may stand there several times). False when it was stopped
  /// before the end: echoes still under way are then not reported. A stop is seen within 50 ms.
  bool AskAll(std::span<const in_addr_t> addresses, const EchoLimits& limits, const Report& report,
              const std::stop_token& stop = {});

  /// The same in steps, for a thread that also waits for other things.
  void Begin(std::vector<in_addr_t> addresses, const EchoLimits& limits, Report report, std::stop_token stop = {});
  bool Finished() const { return run_.next >= run_.addresses.size() && run_.underWay.empty(); }
  /// Takes what has come in, gives up what is late and sends what may leave, without waiting. Returns the time after
  /// which the next step is due when nothing comes in before.
  std::chrono::milliseconds Step();

 private:
  struct UnderWay {
    std::uint16_t sequence;
    in_addr_t address;
    std::size_t index;
    Clock::time_point sent;
  };
  struct Run {
    std::vector<in_addr_t> addresses{};
    EchoLimits limits{};
    Report report{};
    std::stop_token stop{};
    std::size_t next = 0;              ///< the first address that was not sent to
    std::vector<UnderWay> underWay{};  ///< oldest first
    Clock::time_point busySince = {};  ///< the epoch while the channel takes echoes
  };
  void SendMore();
  void TakeAnswers();
  void GiveUpOld();
  std::chrono::milliseconds LongestWait() const;
  std::uint16_t NextSequence();

  EchoChannel& channel_;
  Now now_;
  std::uint16_t sequence_ = 0;
  Run run_;
};

}  // namespace quarl::netscan
