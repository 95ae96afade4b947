#include "plugins/contract/HostMark.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QDir>
#include <QUuid>
#include <csignal>
#include <string_view>

#include "base/ProcessFiles.h"

namespace quarl::plugins {
namespace {

constexpr std::string_view kName = "QUARL_HOST_CALL=";
// A marked process may start another one while the rest are being killed.
constexpr int kMostPasses = 8;

}  // namespace

HostMark::HostMark() : entry_(std::string(kName) + QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()) {}

std::vector<std::string> HostMark::Environment() const {
  std::vector<std::string> entries{entry_};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!std::string_view(*entry).starts_with(kName)) entries.emplace_back(*entry);
  }
  return entries;
}

void HostMark::KillMarked() const {
  for (int pass = 0; pass < kMostPasses && KillOnce(); ++pass) {
  }
}

bool HostMark::KillOnce() const {
  const auto isMark = [this](std::string_view entry) { return entry == entry_; };
  bool found = false;
  const QStringList names = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[1-9]*")}, QDir::Dirs);
  for (const QString& name : names) {
    const pid_t number = name.toInt();
    // Held before it is looked at, so that the signal reaches no later process of this number.
    const Descriptor process = ProcessDescriptor(number);
    if (!process || EnvironmentEntry(number, isMark).empty()) continue;
    found = syscall(SYS_pidfd_send_signal, process.Get(), SIGKILL, nullptr, 0) == 0 || found;
  }
  return found;
}

}  // namespace quarl::plugins
