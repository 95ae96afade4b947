#pragma once

#include <sys/types.h>

#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "plugins/contract/HostProtocol.h"
#include "service/workers/ChildKeeper.h"
#include "service/workers/WorkerCgroup.h"

class QSocketNotifier;

namespace quarl::service {

/// Bytes of data that a worker may have; 0: no limit. A sanitizer reserves more than any limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr qint64 kWorkerMemory = 0;
#else
inline constexpr qint64 kWorkerMemory = qint64{1} << 30;
#endif

struct WorkerSetup {
  QString program;                     ///< native path of quarl-modulehost
  int threads = 1;                     ///< calls that it serves at once
  qint64 memoryLimit = kWorkerMemory;  ///< bytes of data; 0 or less: none
};

/// One long-lived host process for calls of modules. Main thread.
class WorkerProcess {
 public:
  struct Events {
    std::function<void(plugins::HostReply)> reply;
    /// The process is gone; nothing comes after it. The object may be deleted in here.
    std::function<void(int waitStatus)> ended;
  };

  /// Starts the process. Throws Error when it cannot be started.
  /// @param cgroups null where there is none.
  WorkerProcess(const WorkerSetup& setup, ChildKeeper& keeper, CgroupTree* cgroups, Events events);
  /// Kills it with everything it started; its end is not told.
  ~WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  /// Requests of one turn of the event loop go out together. Throws std::length_error for one that fits no frame.
  void Send(const plugins::HostRequest& request);
  /// Kills it with everything it started; its end is told.
  void Kill();
  /// Its end is told, or the kernel holds it.
  bool WasKilled() const { return killed_; }

 private:
  void Spawn(const WorkerSetup& setup);
  void LimitMemory(const WorkerSetup& setup);
  void Flush();
  void Receive();
  void Ended(int waitStatus);

  ChildKeeper& keeper_;
  Events events_;
  std::unique_ptr<WorkerCgroup> cgroup_;
  pid_t pid_ = 0;  ///< 0: gone
  bool killed_ = false;
  int socket_ = -1;
  std::unique_ptr<QSocketNotifier> readable_;
  std::unique_ptr<QSocketNotifier> writable_;
  QTimer flush_;
  std::string outgoing_;
  std::size_t sent_ = 0;  ///< bytes of outgoing_ that are on their way
  plugins::FrameBuffer incoming_;
};

}  // namespace quarl::service
