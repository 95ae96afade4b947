#pragma once

#include <QString>
#include <optional>

#include "base/Error.h"
#include "control/ServiceControl.h"

namespace quarl::control {

class LockError : public Error {
 public:
  using Error::Error;
};

/// The file lock that a service process holds on the host where it serves a store, with its state written in the file.
/// The kernel gives the lock back when the process ends in whatever way, so that it is never stale. The file stays.
class ServiceLock {
 public:
  struct Holder {
    qint64 pid;
    ServiceState state;
  };

  /// Takes the lock for this process, with the state StartPending; nothing when another process holds it. The calling
  /// process must not open the file a second time: closing any descriptor of it gives the lock back. Throws LockError
  /// when the file cannot be made.
  static std::optional<ServiceLock> Take(const QString& path);
  /// The process that holds the lock; nothing when none does or the file cannot be read.
  static std::optional<Holder> Look(const QString& path);

  ServiceLock(ServiceLock&& other) noexcept;
  ServiceLock& operator=(ServiceLock&& other) noexcept;
  ~ServiceLock();

  void Publish(ServiceState state);

 private:
  explicit ServiceLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace quarl::control
