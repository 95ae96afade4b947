#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace quarl::checks {

/// Room of a file system for users that are not the administrator.
struct DiskSpace {
  int error = 0;    ///< errno; the rest holds when it is 0
  double free = 0;  ///< bytes
  double used = 0;  ///< bytes
  double inodesFree = 0;
  double inodes = 0;        ///< 0: the file system does not count them
  bool mountPoint = false;  ///< another file system, or the root of all, begins at the path
};

/// statvfs() and stat().
DiskSpace ReadDiskSpace(const std::string& path);

/// Asks for a file system's room within a time, though a network file system whose server is gone may keep the caller
/// for ever: the question is asked on a thread of its own, and of a path that has not answered no second one is asked.
/// Thread-safe.
class DiskProbe {
 public:
  using Read = std::function<DiskSpace(const std::string& path)>;
  explicit DiskProbe(Read read = &ReadDiskSpace) : read_(std::move(read)) {}
  /// error is ETIMEDOUT when no answer came. Throws std::system_error when no thread can be started.
  DiskSpace Ask(const std::string& path, std::chrono::milliseconds limit);

 private:
  struct Question;
  std::shared_ptr<Question> Join(const std::string& path);

  Read read_;
  std::mutex mutex_;
  std::map<std::string, std::weak_ptr<Question>> open_;
};

}  // namespace quarl::checks
