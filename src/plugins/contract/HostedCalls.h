#pragma once

#include <chrono>
#include <vector>

#include "plugins/contract/HostProtocol.h"
#include "plugins/contract/ModuleCalls.h"
#include "plugins/contract/ModuleWait.h"

namespace quarl::plugins {

/// How long a module may take while no dialog of it is up.
struct HostLimits {
  std::chrono::milliseconds usual{std::chrono::seconds(10)};
  std::chrono::milliseconds alert{std::chrono::seconds(60)};
};

/// Calls each module in a process of its own, quarl-modulehost from the application folder, which finds the helper
/// libraries beside itself. A module can lose nothing but its own process. One thread.
class HostedCalls final : public ModuleCalls {
 public:
  /// The wait must outlive this object.
  HostedCalls(const InstallPaths& paths, ModuleWait& wait, HostLimits limits = {});

  qint16 About(ModuleKind kind, QString& modulePath) override;
  qint16 GetBufferSize(ModuleKind kind, QString& modulePath) override;
  qint16 SetProperties(ModuleKind kind, QString& modulePath, QString& serverName, QString& serverAddress,
                       QString& properties) override;
  qint16 Alert(QString& modulePath, QString& serverName, QString& serverAddress, QString& subject, QString& message,
               QString& properties, QString& resultText) override;

 private:
  /// The first text is the module path.
  qint16 Run(HostOperation operation, ModuleKind kind, const std::vector<QString*>& texts,
             std::chrono::milliseconds limit);

  QString program_;
  ModuleWait& wait_;
  HostLimits limits_;
};

}  // namespace quarl::plugins
