#pragma once

#include <cstdint>

namespace quarl::netscan {

/// How an echo ended, by the usual numbers of echo statuses. No Qt here: the helper program uses it too.
enum class EchoStatus : std::int32_t {
  Answered = 0,
  NetUnreachable = 11002,
  HostUnreachable = 11003,
  ProtocolUnreachable = 11004,
  PortUnreachable = 11005,
  NoResources = 11006,
  PacketTooBig = 11009,
  TimedOut = 11010,
  BadRoute = 11012,
  TtlExpiredInTransit = 11013,
  TtlExpiredInReassembly = 11014,
  ParameterProblem = 11015,
  BadDestination = 11018,
  GeneralFailure = 11050,
};

/// The status behind an ICMP error message. Answered stands for messages that do not end an echo (redirect, source
/// quench, anything that is no error).
EchoStatus StatusOfIcmp(std::uint8_t type, std::uint8_t code);

/// The status behind the errno of a send that failed at once.
EchoStatus StatusOfErrno(int error);

}  // namespace quarl::netscan
