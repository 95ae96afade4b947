#pragma once

#include "base/Clock.h"
#include "base/InstallPaths.h"
#include "control/ServiceControl.h"
#include "store/ModuleInspector.h"
#include "store/SystemConfig.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlSystemConfig final : public SystemConfig {
 public:
  SqlSystemConfig(Database& database, control::ServiceControl& service, const InstallPaths& paths,
                  const ModuleInspector& inspector, const Clock& clock)
      : database_(database), service_(service), paths_(paths), inspector_(inspector), clock_(clock) {}
  qint16 GetServiceState() override;
  bool StartService() override;
  bool StopService() override;
  RecordSet GetTestTypes() override;
  RecordSet GetAlertTypes() override;
  bool AddTestType(const QString& moduleFile, const QString& productName) override;
  bool RemoveTestType(qint32 idTestType) override;
  bool AddAlertType(const QString& moduleFile, const QString& productName) override;
  bool RemoveAlertType(qint32 idAlertType) override;

 private:
  bool AddType(ModuleKind kind, const QString& moduleFile, const QString& productName);

  Database& database_;
  control::ServiceControl& service_;
  const InstallPaths& paths_;
  const ModuleInspector& inspector_;
  const Clock& clock_;
};

}  // namespace quarl::store::sql
