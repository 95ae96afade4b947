#include "service/workers/WorkerCgroup.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <tuple>

namespace quarl::service {
namespace {

constexpr const char* kProcesses = "2048";  // and threads; a quarter of what the unit may have

/// False where the file is missing or refuses the text. Control files take a text in one write.
bool Write(const QString& file, const QByteArray& text) {
  QFile target(file);
  return target.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && target.write(text) == text.size();
}

QByteArray WholeFile(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Where the version-2 tree is mounted; "" for nowhere.
QString MountPoint() {
  for (const QByteArray& line : WholeFile(QStringLiteral("/proc/self/mounts")).split('\n')) {
    const auto words = line.split(' ');
    if (words.size() > 2 && words[2] == "cgroup2") return QFile::decodeName(words[1]);
  }
  return {};
}

/// The group of this process below the mount point; "" for none.
QString OwnGroup() {
  for (const QByteArray& line : WholeFile(QStringLiteral("/proc/self/cgroup")).split('\n')) {
    if (line.startsWith("0::")) return QFile::decodeName(line.mid(3));
  }
  return {};
}

/// Whether the service manager has marked a group as its user's to divide. To a privileged user every group is
/// writable, also one that holds other programs.
bool IsDelegated(const QString& folder) {
  const QByteArray path = QFile::encodeName(folder);
  for (const char* mark : {"user.delegate", "trusted.delegate"}) {
    char value = 0;
    if (getxattr(path.constData(), mark, &value, 1) == 1 && value == '1') return true;
  }
  return false;
}

}  // namespace

WorkerCgroup::WorkerCgroup(QString folder, qint64 memoryLimit) : folder_(std::move(folder)) {
  if (memoryLimit > 0) std::ignore = Write(folder_ + QStringLiteral("/memory.max"), QByteArray::number(memoryLimit));
  std::ignore = Write(folder_ + QStringLiteral("/memory.swap.max"), "0");
  // At most all processors but for a tenth of one, and less than the service where both want them.
  const int processors = QThread::idealThreadCount();
  std::ignore =
      Write(folder_ + QStringLiteral("/cpu.max"), QByteArray::number(processors * 100'000 - 10'000) + " 100000");
  std::ignore = Write(folder_ + QStringLiteral("/cpu.weight"), "50");
  std::ignore = Write(folder_ + QStringLiteral("/pids.max"), kProcesses);
}

WorkerCgroup::~WorkerCgroup() {
  Kill();
  // A killed process leaves its group a moment later; a group that has to stay goes when the next one is made.
  for (int round = 0; round < 20 && rmdir(QFile::encodeName(folder_).constData()) != 0; ++round) usleep(1000);
}

bool WorkerCgroup::Add(pid_t process) {
  return Write(folder_ + QStringLiteral("/cgroup.procs"), QByteArray::number(process));
}

void WorkerCgroup::Kill() {
  std::ignore = Write(folder_ + QStringLiteral("/cgroup.kill"), "1");
}

std::optional<CgroupTree> CgroupTree::OfThisProcess() {
  const QString mount = MountPoint();
  const QString group = OwnGroup();
  // The root group is nobody's to divide.
  if (mount.isEmpty() || group.size() < 2) return std::nullopt;
  const QString folder = mount + group;
  if (!QFileInfo(folder).isWritable() || !IsDelegated(folder)) return std::nullopt;
  const QString own = folder + QStringLiteral("/service");
  if (!QDir().mkpath(own) || !Write(own + QStringLiteral("/cgroup.procs"), QByteArray::number(getpid()))) {
    return std::nullopt;
  }
  for (const char* controller : {"+memory", "+cpu", "+pids"}) {
    std::ignore = Write(folder + QStringLiteral("/cgroup.subtree_control"), controller);
  }
  return CgroupTree(folder);
}

CgroupTree::CgroupTree(QString folder) : folder_(std::move(folder)) {}

std::unique_ptr<WorkerCgroup> CgroupTree::Make(qint64 memoryLimit) {
  // Groups of workers that took long to end. One that holds a process is not removed.
  for (const QString& name : QDir(folder_).entryList({QStringLiteral("worker-*")}, QDir::Dirs)) {
    std::ignore = rmdir(QFile::encodeName(folder_ + u'/' + name).constData());
  }
  const QString folder = QStringLiteral("%1/worker-%2").arg(folder_).arg(next_++);
  if (!QDir().mkdir(folder)) return nullptr;
  return std::make_unique<WorkerCgroup>(folder, memoryLimit);
}

}  // namespace quarl::service
