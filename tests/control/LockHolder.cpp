// Stands for the service process: takes the lock that $QUARL_STORE names and moves on with each signal.
#include <signal.h>

#include <QString>

#include "control/ServiceLock.h"

int main() {
  using quarl::control::ServiceState;
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGUSR1, SIGTERM, SIGUSR2}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  auto lock = quarl::control::ServiceLock::Take(qEnvironmentVariable("QUARL_STORE"));
  if (!lock) return 3;
  for (int signal = 0; sigwait(&signals, &signal) == 0;) {
    if (signal == SIGUSR2) return 0;
    lock->Publish(signal == SIGUSR1 ? ServiceState::Running : ServiceState::StopPending);
  }
}
