#include "netscan/api/EchoStatus.h"

#include <netinet/ip_icmp.h>

#include <cerrno>

namespace quarl::netscan {
namespace {

EchoStatus StatusOfUnreachable(std::uint8_t code) {
  switch (code) {
    case ICMP_NET_UNREACH:
    case ICMP_NET_UNKNOWN:
    case ICMP_NET_ANO:
    case ICMP_NET_UNR_TOS:
      return EchoStatus::NetUnreachable;
    case ICMP_PROT_UNREACH:
      return EchoStatus::ProtocolUnreachable;
    case ICMP_PORT_UNREACH:
      return EchoStatus::PortUnreachable;
    case ICMP_FRAG_NEEDED:
      return EchoStatus::PacketTooBig;
    case ICMP_SR_FAILED:
      return EchoStatus::BadRoute;
    default:
      return EchoStatus::HostUnreachable;
  }
}

}  // namespace

EchoStatus StatusOfIcmp(std::uint8_t type, std::uint8_t code) {
  switch (type) {
    case ICMP_DEST_UNREACH:
      return StatusOfUnreachable(code);
    case ICMP_TIME_EXCEEDED:
      return code == ICMP_EXC_TTL ? EchoStatus::TtlExpiredInTransit : EchoStatus::TtlExpiredInReassembly;
    case ICMP_PARAMETERPROB:
      return EchoStatus::ParameterProblem;
    default:
      return EchoStatus::Answered;
  }
}

EchoStatus StatusOfErrno(int error) {
  switch (error) {
    case ENETUNREACH:
    case ENETDOWN:
      return EchoStatus::NetUnreachable;
    case EHOSTUNREACH:
    case EHOSTDOWN:
      return EchoStatus::HostUnreachable;
    case ENOMEM:
    case ENOBUFS:
      return EchoStatus::NoResources;
    case EMSGSIZE:
      return EchoStatus::PacketTooBig;
    case EACCES:  // a broadcast address
    case EINVAL:
    case EADDRNOTAVAIL:
      return EchoStatus::BadDestination;
    default:
      return EchoStatus::GeneralFailure;
  }
}

}  // namespace quarl::netscan
