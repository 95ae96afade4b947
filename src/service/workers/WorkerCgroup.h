#pragma once

#include <sys/types.h>

#include <QString>
#include <memory>
#include <optional>

namespace quarl::service {

/// One control group around one worker process and what that starts. All groups of the tree are the same user's: a
/// program that sets out to can leave its group or lift a limit. Removed with the object, or, when what is killed takes
/// long to end, when the tree makes the next one.
class WorkerCgroup {
 public:
  WorkerCgroup(QString folder, qint64 memoryLimit);
  ~WorkerCgroup();
  WorkerCgroup(const WorkerCgroup&) = delete;
  WorkerCgroup& operator=(const WorkerCgroup&) = delete;

  [[nodiscard]] bool Add(pid_t process);
  /// Kills every process in it.
  void Kill();

 private:
  QString folder_;
};

/// The part of the version-2 control group tree that the service manager has delegated to this service.
class CgroupTree {
 public:
  /// The group of this process where it may be divided (a unit with Delegate=yes); this process moves to a group of its
  /// own inside it, since processes live in leaves only. Nothing where none is delegated.
  static std::optional<CgroupTree> OfThisProcess();
  /// @param folder an existing group that this process may divide.
  explicit CgroupTree(QString folder);

  /// A new group for a worker; null when it cannot be made. The worker must be in it before the next call.
  /// @param memoryLimit bytes, kept where the memory controller has been delegated.
  std::unique_ptr<WorkerCgroup> Make(qint64 memoryLimit);

 private:
  QString folder_;
  int next_ = 1;
};

}  // namespace quarl::service
