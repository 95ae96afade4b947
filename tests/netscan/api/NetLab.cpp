#include "netscan/api/NetLab.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace quarl::netscan {

NetLab::NetLab() {
  if (Missing().isEmpty()) Build();
}

QString NetLab::Missing() const {
  for (const QString& reason : {missing_, near_.Missing(), far_.Missing()})
    if (!reason.isEmpty()) return reason;
  return {};
}

void NetLab::Build() {
  near_.Batch("link add cable type veth peer name cable netns " + far_.Path() + "\n");
  near_.Batch(
      "link set lo up\naddr add 10.77.0.1/24 brd + dev cable\nlink set cable up\n"
      "route add 10.77.0.0/16 via 10.77.0.2\n");
  far_.Batch(
      "link set lo up\naddr add 10.77.0.2/24 dev cable\nlink set cable up\n"
      "route add blackhole 10.77.1.0/24\nroute add unreachable 10.77.2.0/24\nroute add prohibit 10.77.4.0/24\n"
      "route add 10.77.5.0/24 via 10.77.0.9\n");
  if (!Missing().isEmpty()) return;
  Set(Side::Near, "ip_default_ttl", "1");
  Set(Side::Far, "ip_forward", "1");
  Set(Side::Far, "icmp_ratelimit", "0");
  AwaitCable();
}

// A cable carries its first packets some time after both ends are up. Nobody listens on far, so a connection is refused
// as soon as packets go both ways.
void NetLab::AwaitCable() {
  const int own = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
  near_.Enter();
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  setns(own, CLONE_NEWNET);
  close(own);
  const timeval limit{30, 0};
  setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  sockaddr_in far{};
  far.sin_family = AF_INET;
  far.sin_port = htons(9);
  far.sin_addr.s_addr = inet_addr("10.77.0.2");
  if (connect(connection, reinterpret_cast<const sockaddr*>(&far), sizeof far) != -1 || errno != ECONNREFUSED)
    missing_ = Q("the cable between the namespaces carries nothing");
  close(connection);
}

void NetLab::Set(Side side, const char* name, const char* value) {
  SpaceOf(side).Set(name, value);
}

NetLab::Outcome NetLab::Run(User user, const QString& program, const QStringList& arguments, const QByteArray& input) {
  return near_.Run(user, program, arguments, input);
}

QString NetLab::Install(const QString& program, const QString& name, bool withCapability) {
  const QString path = InstallProgram(program, programs_.path(), name);
  if (!withCapability) return path;
  const QString reason = GiveCapability(path);
  if (reason.isEmpty()) return path;
  missing_ = reason;
  return {};
}

}  // namespace quarl::netscan
