#pragma once

#include <QStringList>
#include <QTemporaryDir>

#include "netscan/api/NetSpace.h"

namespace quarl::netscan {

/// Two network namespaces of the test's own, joined by one cable. Near (10.77.0.1) asks; far (10.77.0.2) answers and
/// routes for near: 10.77.1.x is silent, 10.77.2.x unreachable host, 10.77.3.x unreachable net, 10.77.4.x forbidden,
/// 10.77.5.x one hop too far. Nothing else lives on the cable. Near has no route to anywhere else.
class NetLab {
 public:
  enum class Side { Near, Far };
  using User = TestUser;
  using Outcome = NetSpace::Outcome;

  NetLab();
  NetLab(const NetLab&) = delete;
  NetLab& operator=(const NetLab&) = delete;

  /// Why there is no laboratory here; empty when it stands.
  QString Missing() const;
  /// The value of a file below /proc/sys/net/ipv4.
  void Set(Side side, const char* name, const char* value);
  /// Runs a program on near to its end.
  Outcome Run(User user, const QString& program, const QStringList& arguments, const QByteArray& input = {});
  /// A copy of a program that every user may run, with cap_net_raw when asked for. Empty when the file system or the
  /// machine takes no capability; Missing() then says why.
  QString Install(const QString& program, const QString& name, bool withCapability);

 private:
  void Build();
  void AwaitCable();
  NetSpace& SpaceOf(Side side) { return side == Side::Near ? near_ : far_; }

  QTemporaryDir programs_;
  QString missing_;
  NetSpace near_, far_;
};

}  // namespace quarl::netscan
