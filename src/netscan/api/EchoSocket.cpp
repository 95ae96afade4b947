#include "netscan/api/EchoSocket.h"

#include <arpa/inet.h>
#include <linux/errqueue.h>
#include <linux/filter.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quarl::netscan {
namespace {

constexpr int kBufferSize = 256 * 1024;  // a full window of replies and more
constexpr int kForeignPackets = 512;     // looked at in one go before the caller is asked again

sockaddr_in SocketAddress(in_addr_t address) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = address;
  return name;
}

template <typename Value>
bool SetOption(int descriptor, int level, int option, const Value& value) {
  return setsockopt(descriptor, level, option, &value, sizeof value) == 0;
}

bool IsBusy(int error) {
  return error == EAGAIN || error == ENOBUFS;
}

// Without this filter of the kernel a raw socket would be filled by the replies to everybody else on this machine.
bool TakeOnlyReplies(int descriptor, std::uint16_t id) {
  std::array<sock_filter, 7> program{{
      BPF_STMT(BPF_LDX | BPF_B | BPF_MSH, 0),  // X: size of the IP header
      BPF_STMT(BPF_LD | BPF_B | BPF_IND, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, ICMP_ECHOREPLY, 0, 3),
      BPF_STMT(BPF_LD | BPF_H | BPF_IND, 4),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, id, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, 0xffff),
      BPF_STMT(BPF_RET | BPF_K, 0),
  }};
  return SetOption(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, sock_fprog{program.size(), program.data()}) &&
         SetOption(descriptor, SOL_SOCKET, SO_LOCK_FILTER, 1);
}

// The ICMP error that the kernel noted beside a message of the error queue, or null.
const sock_extended_err* IcmpErrorOf(msghdr& message) {
  for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_level != SOL_IP || part->cmsg_type != IP_RECVERR) continue;
    const auto* error = reinterpret_cast<const sock_extended_err*>(CMSG_DATA(part));
    return error->ee_origin == SO_EE_ORIGIN_ICMP ? error : nullptr;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<EchoSocket> EchoSocket::Open(EchoMethod method) {
  const int type = method == EchoMethod::Datagram ? SOCK_DGRAM : SOCK_RAW;
  const int descriptor = socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_ICMP);
  if (descriptor < 0) return nullptr;
  std::unique_ptr<EchoSocket> opened(new EchoSocket(descriptor, method));
  if (!opened->Prepare()) opened.reset();
  return opened;
}

EchoSocket::EchoSocket(int descriptor, EchoMethod method) : descriptor_(descriptor), method_(method) {}

EchoSocket::~EchoSocket() {
  close(descriptor_);
}

bool EchoSocket::Prepare() {
  SetOption(descriptor_, SOL_SOCKET, SO_SNDBUF, kBufferSize);
  SetOption(descriptor_, SOL_SOCKET, SO_RCVBUF, kBufferSize);
  if (!SetOption(descriptor_, SOL_IP, IP_RECVERR, 1)) return false;
  if (method_ == EchoMethod::Datagram) return true;
  std::uint16_t id = 0;
  if (getrandom(&id, sizeof id, 0) != sizeof id) return false;
  id_ = id;
  return TakeOnlyReplies(descriptor_, id);
}

bool EchoSocket::Send(std::uint16_t sequence, in_addr_t address) {
  if (!IsHostAddress(address)) {
    refused_.push_back({sequence, address, EchoStatus::BadDestination});
    return true;
  }
  const auto packet = MakeEchoRequest(id_.value_or(0), sequence);
  const sockaddr_in to = SocketAddress(address);
  int error = 0;
  // A send also reports, and so takes away, an error that an earlier echo left on the socket.
  for (int attempt = 0; attempt < 16; ++attempt) {
    if (sendto(descriptor_, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0)
      return true;
    error = errno;
    if (IsBusy(error)) return false;
  }
  refused_.push_back({sequence, address, StatusOfErrno(error)});
  return true;
}

std::optional<EchoAnswer> EchoSocket::Receive() {
  if (!refused_.empty()) {
    const EchoAnswer answer = refused_.front();
    refused_.pop_front();
    return answer;
  }
  if (const auto answer = ReceiveReply()) return answer;
  return ReceiveError();
}

std::optional<EchoAnswer> EchoSocket::ReadReply(Bytes packet, in_addr_t sender) const {
  const auto icmp = method_ == EchoMethod::Raw ? IcmpOfPacket(packet) : packet;
  if (!icmp) return std::nullopt;
  const auto sequence = ReadEchoReply(*icmp, id_);
  if (!sequence) return std::nullopt;
  return EchoAnswer{*sequence, sender, EchoStatus::Answered};
}

std::optional<EchoAnswer> EchoSocket::ReceiveReply() {
  std::array<std::uint8_t, 2048> buffer;  // longer packets are cut and then match nothing
  for (int count = 0; count < kForeignPackets; ++count) {
    sockaddr_in from{};
    socklen_t fromSize = sizeof from;
    const ssize_t size = recvfrom(descriptor_, buffer.data(), buffer.size(), MSG_DONTWAIT,
                                  reinterpret_cast<sockaddr*>(&from), &fromSize);
    if (size < 0 && IsBusy(errno)) return std::nullopt;
    if (size < 0) continue;  // an error of an earlier echo, which stands in the error queue as well
    if (auto answer = ReadReply(Bytes(buffer.data(), static_cast<std::size_t>(size)), from.sin_addr.s_addr))
      return answer;
  }
  return std::nullopt;
}

std::optional<EchoAnswer> EchoSocket::ReceiveError() {
  std::array<std::uint8_t, 256> quoted;
  alignas(cmsghdr) std::array<std::uint8_t, 512> control;
  for (int count = 0; count < kForeignPackets; ++count) {
    sockaddr_in asked{};
    iovec part{quoted.data(), quoted.size()};
    msghdr message{};
    message.msg_name = &asked;
    message.msg_namelen = sizeof asked;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = recvmsg(descriptor_, &message, MSG_ERRQUEUE | MSG_DONTWAIT);
    if (size < 0) return std::nullopt;
    const sock_extended_err* error = IcmpErrorOf(message);
    if (error == nullptr || message.msg_namelen < sizeof asked) continue;
    const EchoStatus status = StatusOfIcmp(error->ee_type, error->ee_code);
    const auto sequence = ReadQuotedRequest(Bytes(quoted.data(), static_cast<std::size_t>(size)), id_);
    if (sequence && status != EchoStatus::Answered) return EchoAnswer{*sequence, asked.sin_addr.s_addr, status};
  }
  return std::nullopt;
}

void EchoSocket::Wait(std::chrono::milliseconds atMost) {
  if (!refused_.empty()) return;
  pollfd wanted{descriptor_, POLLIN, 0};
  poll(&wanted, 1, static_cast<int>(atMost.count()));
}

}  // namespace quarl::netscan
