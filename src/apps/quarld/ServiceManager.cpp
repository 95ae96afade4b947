#include "apps/quarld/ServiceManager.h"

#include <systemd/sd-daemon.h>

#include <cstdint>

namespace quarl::daemon {

ServiceManager::ServiceManager() {
  std::uint64_t watchdog = 0;  // microseconds
  if (sd_watchdog_enabled(0, &watchdog) > 0) aliveEveryMs_ = static_cast<qint64>(watchdog / 3000);
  sinceAlive_.start();
}

void ServiceManager::Ready() const {
  sd_notify(0, "READY=1");
}

void ServiceManager::Status(const QString& line) {
  if (line == status_) return;
  status_ = line;
  sd_notify(0, ("STATUS=" + line.toStdString()).c_str());
}

void ServiceManager::Stopping() const {
  sd_notify(0, "STOPPING=1");
}

void ServiceManager::Alive() {
  if (aliveEveryMs_ == 0 || sinceAlive_.elapsed() < aliveEveryMs_) return;
  sinceAlive_.restart();
  sd_notify(0, "WATCHDOG=1");
}

}  // namespace quarl::daemon
