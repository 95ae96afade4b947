#pragma once

#include <sys/types.h>

#include <QString>
#include <QStringList>
#include <optional>

#include "base/Descriptor.h"
#include "plugins/contract/HostMark.h"

namespace quarl::plugins {

/// How a process ended.
struct HostEnd {
  bool bySignal = false;
  int number = 0;  ///< signal or exit status
};

/// A sentence for the user: what happened when the module (file name) ended its process instead of answering.
QString EndSentence(const QString& module, const HostEnd& end);

/// A running quarl-modulehost, in a session of its own. It ends with the thread that started it, and with this object:
/// then it is killed with everything that its modules have started.
class HostProcess {
 public:
  /// @param program native path. @param arguments none for one call, "--worker", "N" for many.
  /// Throws ModuleError when it cannot be started.
  HostProcess(const QString& program, const QStringList& arguments);
  ~HostProcess();
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  /// The socket on which frames of HostProtocol.h travel. Does not block.
  int Channel() const { return channel_.Get(); }
  /// What modules write to standard output and error. Does not block.
  int Output() const { return output_.Get(); }
  /// Becomes readable when the process has ended.
  int EndWatch() const { return endWatch_.Get(); }
  /// How it ended; nothing while it runs. Never waits.
  std::optional<HostEnd> End();
  /// Kills the process and all of its group.
  void Kill();

 private:
  void Reap(bool wait);

  HostMark mark_;
  Descriptor channel_, output_, endWatch_;
  pid_t process_ = -1;
  std::optional<HostEnd> end_;
};

}  // namespace quarl::plugins
