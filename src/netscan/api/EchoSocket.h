#pragma once

#include <deque>
#include <memory>

#include "netscan/api/EchoChannel.h"

namespace quarl::netscan {

/// An ICMP socket of this process, for any number of hosts at once. No Qt here: the helper program uses it too.
class EchoSocket final : public EchoChannel {
 public:
  /// @param method Datagram or Raw. Null when the kernel does not permit that kind; errno says why.
  static std::unique_ptr<EchoSocket> Open(EchoMethod method);
  ~EchoSocket() override;

  EchoMethod Method() const override { return method_; }
  bool Send(std::uint16_t sequence, in_addr_t address) override;
  std::optional<EchoAnswer> Receive() override;
  void Wait(std::chrono::milliseconds atMost) override;
  int Descriptor() const override { return descriptor_; }

 private:
  EchoSocket(int descriptor, EchoMethod method);
  bool Prepare();
  std::optional<EchoAnswer> ReadReply(Bytes packet, in_addr_t sender) const;
  std::optional<EchoAnswer> ReceiveReply();
  std::optional<EchoAnswer> ReceiveError();

  int descriptor_;
  EchoMethod method_;
  std::optional<std::uint16_t> id_;  ///< raw only: the kernel itself gives a datagram socket its id
  std::deque<EchoAnswer> refused_;   ///< echoes that could not be sent
};

}  // namespace quarl::netscan
