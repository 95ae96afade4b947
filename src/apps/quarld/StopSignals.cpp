#include "apps/quarld/StopSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "base/Error.h"

namespace quarl::daemon {

StopSignals::StopSignals(std::function<void()> asked) {
  sigset_t signals{};
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ < 0) {
    throw Error(QStringLiteral("Signals cannot be watched: %1.")
                    .arg(QString::fromStdString(std::generic_category().message(errno))));
  }
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, call = std::move(asked)] {
    signalfd_siginfo info{};
    while (read(descriptor_, &info, sizeof(info)) == sizeof(info)) call();
  });
}

StopSignals::~StopSignals() {
  notifier_.reset();
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace quarl::daemon
