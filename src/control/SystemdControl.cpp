#include "control/SystemdControl.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "control/SystemdUnit.h"

namespace quarl::control {

/// The thread that talks to the bus. It carries out requests first and reads the state when asked.
class SystemdControl::Worker {
 public:
  explicit Worker(QString unit) : thread_([this, name = std::move(unit)] { Run(name); }) {}

  ~Worker() {
    {
      const std::lock_guard lock(mutex_);
      end_ = true;
    }
    wake_.notify_all();
    thread_.join();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  ServiceState State() {
    std::unique_lock lock(mutex_);
    const quint64 wanted = ++asked_;
    wake_.notify_all();
    answered_.wait_for(lock, std::chrono::milliseconds(250), [&] { return served_ >= wanted; });
    return state_;
  }

  void Request(const QString& method) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(method);
    wake_.notify_all();
  }

 private:
  void Run(const QString& name) {
    SystemdUnit unit(name);
    std::unique_lock lock(mutex_);
    while (true) {
      wake_.wait(lock, [&] { return end_ || !requests_.empty() || served_ < asked_; });
      if (end_) return;
      const auto requests = std::exchange(requests_, {});
      const quint64 serving = asked_;
      lock.unlock();
      for (const QString& method : requests) unit.Request(method);
      const ServiceState state = unit.State();
      lock.lock();
      state_ = state;
      served_ = serving;
      answered_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable answered_;
  std::vector<QString> requests_;
  quint64 asked_ = 0;
  quint64 served_ = 0;
  ServiceState state_ = ServiceState::NotInstalled;
  bool end_ = false;
  std::thread thread_;
};

SystemdControl::SystemdControl(QString unit) : unit_(std::move(unit)) {}

SystemdControl::~SystemdControl() = default;

SystemdControl::Worker& SystemdControl::Working() {
  if (!worker_) worker_ = std::make_unique<Worker>(unit_);
  return *worker_;
}

ServiceState SystemdControl::State() {
  return Working().State();
}

bool SystemdControl::Start() {
  if (Working().State() == ServiceState::NotInstalled) return false;
  Working().Request(QStringLiteral("StartUnit"));
  return true;
}

bool SystemdControl::Stop() {
  if (Working().State() == ServiceState::NotInstalled) return false;
  Working().Request(QStringLiteral("StopUnit"));
  return true;
}

}  // namespace quarl::control
