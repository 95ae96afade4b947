#include "store/sql/SqlSystemConfig.h"

#include <QFileInfo>

#include "store/sql/ModuleInstaller.h"
#include "store/sql/Rows.h"
#include "store/sql/ServiceRow.h"

namespace quarl::store::sql {
namespace {

struct TypeSql {
  const char* sequence;
  const char* modules;
  const char* insert;
};

constexpr TypeSql kTestSql = {"test_types", "SELECT module FROM test_types",
                              "INSERT INTO test_types (id_test_type, name, module) VALUES ($1, $2, $3)"};
constexpr TypeSql kAlertSql = {"alert_types", "SELECT module FROM alert_types",
                               "INSERT INTO alert_types (id_alert_type, name, module) VALUES ($1, $2, $3)"};

bool IsRecorded(Connection& connection, const TypeSql& sql, const QString& module) {
  Query query(connection, sql.modules);
  while (query.Next()) {
    if (query.Text(0).compare(module, Qt::CaseInsensitive) == 0) return true;
  }
  return false;
}

QString NameOfType(const QString& productName, const QString& module) {
  if (!productName.trimmed().isEmpty()) return productName;
  const QString base = QFileInfo(module).completeBaseName();
  return base.isEmpty() ? module : base;
}

}  // namespace

qint16 SqlSystemConfig::GetServiceState() {
  const auto instance = database_.Read([&](Connection& connection) { return ReadInstance(connection); });
  const auto here = service_.State();
  const bool idleHere = here == control::ServiceState::NotInstalled || here == control::ServiceState::Stopped;
  // One that this host does not know of may serve the store from another.
  if (idleHere && instance && IsAlive(*instance, clock_.NowMs())) return instance->state;
  return static_cast<qint16>(here);
}

bool SqlSystemConfig::StartService() {
  return service_.Start();
}

bool SqlSystemConfig::StopService() {
  return service_.Stop();
}

RecordSet SqlSystemConfig::GetTestTypes() {
  static const Fields fields =
      MakeFields({{"IDTestType", FieldType::Integer}, {"TestType", FieldType::Text}, {"Module", FieldType::Text}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields, "SELECT id_test_type, name, module FROM test_types ORDER BY id_test_type");
  });
}

RecordSet SqlSystemConfig::GetAlertTypes() {
  static const Fields fields =
      MakeFields({{"IDAlertType", FieldType::Integer}, {"AlertType", FieldType::Text}, {"Module", FieldType::Text}});
  return database_.Read([&](Connection& connection) {
    return Fetch(connection, fields, "SELECT id_alert_type, name, module FROM alert_types ORDER BY id_alert_type");
  });
}

bool SqlSystemConfig::AddType(ModuleKind kind, const QString& moduleFile, const QString& productName) {
  const TypeSql& sql = kind == ModuleKind::Test ? kTestSql : kAlertSql;
  ModuleInstaller installer(paths_.ModuleFolder(kind), inspector_);
  const bool fits = installer.Prepare(moduleFile);
  const bool added = database_.Write([&](Connection& connection) {
    // Under the write lock, so that two programs never bring two files for one name.
    if (!fits || IsRecorded(connection, sql, installer.ModuleName()) || !installer.Install()) return false;
    const qint32 id = NextId(connection, sql.sequence);
    if (id < 1) return false;
    Change(connection, sql.insert, id, NameOfType(productName, installer.ModuleName()), installer.ModuleName());
    return true;
  });
  if (added) installer.Keep();
  return added;
}

bool SqlSystemConfig::AddTestType(const QString& moduleFile, const QString& productName) {
  return AddType(ModuleKind::Test, moduleFile, productName);
}

bool SqlSystemConfig::AddAlertType(const QString& moduleFile, const QString& productName) {
  return AddType(ModuleKind::Alert, moduleFile, productName);
}

bool SqlSystemConfig::RemoveTestType(qint32 idTestType) {
  return database_.Write([&](Connection& connection) {
    return !Exists(connection, "SELECT 1 FROM tests WHERE id_test_type = $1", idTestType) &&
           Change(connection, "DELETE FROM test_types WHERE id_test_type = $1", idTestType) > 0;
  });
}

bool SqlSystemConfig::RemoveAlertType(qint32 idAlertType) {
  return database_.Write([&](Connection& connection) {
    return !Exists(connection, "SELECT 1 FROM alerts WHERE id_alert_type = $1", idAlertType) &&
           Change(connection, "DELETE FROM alert_types WHERE id_alert_type = $1", idAlertType) > 0;
  });
}

}  // namespace quarl::store::sql
