#pragma once

#include <QHash>
#include <string>

#include "base/InstallPaths.h"
#include "service/AlertSender.h"
#include "service/CheckRunner.h"
#include "service/workers/WorkerPool.h"

namespace quarl::service {

/// The paths of modules of a kind by their file names, looked up anew every few seconds.
class ModulePaths {
 public:
  ModulePaths(InstallPaths paths, ModuleKind kind) : paths_(std::move(paths)), kind_(kind) { clock_.start(); }

  struct Path {
    QString text;       ///< native
    std::string bytes;  ///< the same for a request
  };
  /// Good until the next call. Throws Error for a name that is no plain file name.
  const Path& Of(const QString& module);

 private:
  struct Known {
    Path path;
    qint64 untilMs = 0;
  };

  InstallPaths paths_;
  ModuleKind kind_;
  QHash<QString, Known> known_;
  QElapsedTimer clock_;
};

/// Runs tests through the test modules' worker processes.
class HostedRunner final : public CheckRunner {
 public:
  /// @param pool borrowed, used by nobody else
  /// @param mostAtOnce how many checks may be on their way; see WorkerPool::Load()
  HostedRunner(WorkerPool& pool, InstallPaths paths, std::size_t mostAtOnce = 16384);

  bool HasRoom() const override { return pool_.Load() < mostAtOnce_; }
  void Start(const CheckJob& job, Done done) override;
  void Abort() override { pool_.Abort(); }

 private:
  WorkerPool& pool_;
  ModulePaths paths_;
  std::size_t mostAtOnce_;
};

/// Hands messages to the alert modules' worker processes.
class HostedSender final : public AlertSender {
 public:
  /// @param pool borrowed, used by nobody else
  HostedSender(WorkerPool& pool, InstallPaths paths) : pool_(pool), paths_(std::move(paths), ModuleKind::Alert) {}

  void Send(const AlertJob& job, Done done) override;
  void Abort() override { pool_.Abort(); }

 private:
  WorkerPool& pool_;
  ModulePaths paths_;
};

}  // namespace quarl::service
