#include "tests/local/DiskProbe.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <condition_variable>
#include <thread>

namespace quarl::checks {

/// Kept alive by the thread that waits for the file system and by everybody who waits for it.
struct DiskProbe::Question {
  std::mutex mutex;
  std::condition_variable answered;
  bool done = false;
  DiskSpace space{};
};

DiskSpace ReadDiskSpace(const std::string& path) {
  DiskSpace space;
  struct statvfs room {};
  struct stat own {
  }, parent{};
  if (::statvfs(path.c_str(), &room) != 0 || ::stat(path.c_str(), &own) != 0) {
    space.error = errno;
    return space;
  }
  const bool hasParent = ::stat((path + "/..").c_str(), &parent) == 0;
  space.mountPoint = hasParent && (own.st_dev != parent.st_dev || own.st_ino == parent.st_ino);
  const auto unit = static_cast<double>(room.f_frsize);
  space.free = static_cast<double>(room.f_bavail) * unit;
  space.used = static_cast<double>(room.f_blocks - room.f_bfree) * unit;
  space.inodesFree = static_cast<double>(room.f_favail);
  space.inodes = static_cast<double>(room.f_files);
  return space;
}

std::shared_ptr<DiskProbe::Question> DiskProbe::Join(const std::string& path) {
  const std::lock_guard lock(mutex_);
  std::erase_if(open_, [](const auto& entry) { return entry.second.expired(); });
  if (std::shared_ptr<Question> open = open_[path].lock()) return open;
  auto question = std::make_shared<Question>();
  std::thread([question, path, read = read_] {
    const DiskSpace space = read(path);
    const std::lock_guard answer(question->mutex);
    question->space = space;
    question->done = true;
    question->answered.notify_all();
  }).detach();
  open_[path] = question;
  return question;
}

DiskSpace DiskProbe::Ask(const std::string& path, std::chrono::milliseconds limit) {
  const std::shared_ptr<Question> question = Join(path);
  std::unique_lock lock(question->mutex);
  if (question->answered.wait_for(lock, limit, [&] { return question->done; })) return question->space;
  DiskSpace late;
  late.error = ETIMEDOUT;
  return late;
}

}  // namespace quarl::checks
