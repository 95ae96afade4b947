#pragma once

#include <sys/types.h>

#include <deque>
#include <memory>

#include "netscan/api/EchoChannel.h"
#include "netscan/api/EchoLine.h"
#include "netscan/api/EchoPace.h"

namespace quarl::netscan {

/// Echoes through the helper program quarl-echo, for users to whom the kernel permits no ICMP socket. The program
/// lives as long as this object. When it ends by itself, what is under way stays without an answer.
class EchoHelper final : public EchoChannel {
 public:
  /// Starts the program (native path) and waits at most five seconds until its socket is open. Null when the program
  /// is missing or gets no socket either.
  static std::unique_ptr<EchoHelper> Start(const std::string& program);
  ~EchoHelper() override;

  EchoMethod Method() const override { return EchoMethod::Helper; }
  bool Send(std::uint16_t sequence, in_addr_t address) override;
  std::optional<EchoAnswer> Receive() override;
  void Wait(std::chrono::milliseconds atMost) override;
  int Descriptor() const override { return ended_ ? -1 : descriptor_; }

 private:
  EchoHelper(int descriptor, pid_t process);
  bool AwaitReady();
  void ReadLines();

  int descriptor_;
  pid_t process_;
  EchoPace pace_;
  EchoLines lines_;
  bool ended_ = false;
  std::deque<EchoAnswer> refused_;
};

}  // namespace quarl::netscan
