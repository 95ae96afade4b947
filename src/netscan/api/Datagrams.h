#pragma once

#include <netinet/in.h>

#include <functional>
#include <memory>

#include "netscan/api/Bytes.h"
#include "netscan/api/ScanLoop.h"

namespace quarl::netscan {

/// A UDP socket that never blocks, watched by a loop as long as it lives. Addresses in network byte order, ports in
/// host byte order.
class Datagrams {
 public:
  using Received = std::function<void(Bytes packet, in_addr_t sender)>;

  /// @param port 0: any. Null when the socket or the port is not to be had; errno says why.
  static std::unique_ptr<Datagrams> Open(ScanLoop& loop, in_port_t port, Received received);
  ~Datagrams();
  Datagrams(const Datagrams&) = delete;
  Datagrams& operator=(const Datagrams&) = delete;

  /// False when nothing could be sent for now; what can never be sent is dropped.
  [[nodiscard]] bool Send(Bytes packet, in_addr_t to, in_port_t port);
  /// To a multicast group on the network of this own address; not beyond it, and not to this machine itself.
  [[nodiscard]] bool SendToGroup(Bytes packet, in_addr_t group, in_port_t port, in_addr_t own);

 private:
  Datagrams(ScanLoop& loop, int descriptor, Received received);
  void TakeAll();

  ScanLoop& loop_;
  int descriptor_;
  Received received_;
};

}  // namespace quarl::netscan
