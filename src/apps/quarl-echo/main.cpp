// quarl-echo: sends ICMP echoes for users to whom the kernel permits no ICMP socket. Installed with the file
// capability cap_net_raw, which opens the one socket and is then given up for good. Takes no arguments.

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <tuple>

#include "apps/quarl-echo/EchoServer.h"

namespace {

using quarl::netscan::EchoMethod;
using quarl::netscan::EchoServer;
using quarl::netscan::EchoSocket;

enum Exit { kDone = 0, kNoSocket = 1, kBadInput = 2, kPrivilegeKept = 3 };

// Back to what the caller may do, for good. False when anything is left.
bool GiveUpPrivileges() {
  const uid_t user = getuid();
  const gid_t group = getgid();
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
  if (setresgid(group, group, group) != 0 || setresuid(user, user, user) != 0) return false;
  if (syscall(SYS_capset, &header, none.data()) != 0) return false;
  // Not dumpable: the caller runs as the same user and must not take the socket out by ptrace.
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0) return false;
  return EchoSocket::Open(EchoMethod::Raw) == nullptr;
}

}  // namespace

int main(int argc, char**) {
  const auto socket = EchoSocket::Open(EchoMethod::Raw);
  if (!socket) std::perror("quarl-echo: no raw ICMP socket");
  if (!GiveUpPrivileges()) return kPrivilegeKept;
  if (argc != 1) {
    std::ignore =
        std::fputs("quarl-echo takes no arguments; it serves the console and the monitoring service.\n", stderr);
    return kBadInput;
  }
  // A caller may have closed the standard descriptors: the socket must not stand in for one of them.
  if (!socket || socket->Descriptor() <= STDERR_FILENO) return kNoSocket;
  return EchoServer(*socket).Serve() ? kDone : kBadInput;
}
