#pragma once

#include <netinet/in.h>

#include <deque>
#include <functional>
#include <map>

#include "netscan/api/Bytes.h"
#include "netscan/api/ScanLoop.h"

namespace quarl::netscan {

/// Short conversations over TCP with many machines at once, none of which blocks. The loop does not turn any more when
/// this object has gone. Addresses in network byte order, ports in host byte order.
class TcpTalks {
 public:
  /// What to do after something has come in.
  struct Next {
    bool finished = true;
    ByteVector send{};  ///< when not finished: what to say now; then only what comes in after it is given
    static Next Wait() { return {false, {}}; }
    static Next Say(ByteVector bytes) { return {false, std::move(bytes)}; }
  };
  /// Called with everything that has come in since we last spoke; `ended`: the other side says no more.
  using Heard = std::function<Next(Bytes received, bool ended)>;

  struct Limits {
    std::chrono::milliseconds time;  ///< for each conversation
    std::size_t atOnce;
  };

  TcpTalks(ScanLoop& loop, Limits limits);
  ~TcpTalks();
  TcpTalks(const TcpTalks&) = delete;
  TcpTalks& operator=(const TcpTalks&) = delete;

  /// Connects and says this first. A machine that takes too long is never heard. @param refused called for one that is
  /// there but does not listen; may be empty.
  void Begin(in_addr_t address, in_port_t port, ByteVector first, Heard heard, std::function<void()> refused = {});
  bool Idle() const { return talks_.empty() && waiting_.empty(); }

 private:
  struct Talk {
    in_addr_t address = 0;
    in_port_t port = 0;
    ByteVector toSend{};
    Heard heard{};
    std::function<void()> refused{};
    int descriptor = -1;
    std::size_t sent = 0;
    ByteVector received{};
  };
  using Id = std::uint64_t;

  void BeginWaiting();
  bool Connect(Id id, Talk& talk);
  void Act(Id id);
  bool SendSome(Talk& talk);
  bool ReceiveSome(Talk& talk);
  void Watch(Id id, const Talk& talk);
  void End(Id id);

  ScanLoop& loop_;
  Limits limits_;
  std::deque<Talk> waiting_;
  std::map<Id, Talk> talks_;
  Id last_ = 0;
};

}  // namespace quarl::netscan
