#pragma once

#include <QString>

#include "netscan/api/Echo.h"

namespace quarl::netscan {

/// Network services for the console. Holds no state between calls; made where it is needed.
class clsNetAPI {
 public:
  /// @param helperProgram native path, asked when the kernel permits this user no socket.
  explicit clsNetAPI(QString helperProgram = EchoHelperProgram());

  /// Sends one echo and waits at most 500 ms: 0 when the host answered, otherwise the echo's status (11010 timed out,
  /// 11003 host unreachable ...), -1 when the text is no dotted address. Where echoes cannot be sent at all, 0.
  [[nodiscard]] qint32 Ping(const QString& ipAddress) const;

 private:
  QString helperProgram_;
};

}  // namespace quarl::netscan
