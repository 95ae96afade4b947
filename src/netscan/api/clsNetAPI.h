#pragma once

#include <QString>
#include <functional>

#include "netscan/api/Echo.h"
#include "netscan/api/HostScan.h"

namespace quarl::netscan {

/// Network services for the console. Holds no state between calls; made where it is needed. Blocks its thread: what
/// must stay painted uses HostScan.
class clsNetAPI {
 public:
  /// Takes a sentence for the user, who sees it in a plain box with the application's title.
  using Tell = std::function<void(const QString& message)>;

  /// @param helperProgram native path, asked when the kernel permits this user no socket.
  explicit clsNetAPI(QString helperProgram = EchoHelperProgram(), Tell tell = {});

  /// The machines of the local networks whose class is in the filter (SystemClass): "NAME|label", separated by ",".
  /// Empty when there is none or nothing can be found out. Takes some seconds.
  [[nodiscard]] QString EnumerateServers(qint32 filter) const;
  [[nodiscard]] QString EnumerateServers(qint32 filter, ScanSetup setup) const;

  /// The first IPv4 address of the host, dotted. Empty when there is none or no name server answers within five
  /// seconds, after a message.
  [[nodiscard]] QString GetIPAddress(const QString& name) const;

  /// Sends one echo and waits at most 500 ms: 0 when the host answered, otherwise the echo's status (11010 timed out,
  /// 11003 host unreachable ...), -1 when the text is no dotted address. Where echoes cannot be sent at all, 0.
  [[nodiscard]] qint32 Ping(const QString& ipAddress) const;

 private:
  QString helperProgram_;
  Tell tell_;
};

}  // namespace quarl::netscan
