#include "store/sql/SqlStores.h"

#include <algorithm>

#include "base/Clock.h"
#include "control/ServiceControl.h"
#include "store/sql/Schema.h"
#include "store/sql/SqlAlertStore.h"
#include "store/sql/SqlConfigurationStore.h"
#include "store/sql/SqlGroupStore.h"
#include "store/sql/SqlInstallConfig.h"
#include "store/sql/SqlLogStore.h"
#include "store/sql/SqlServerStore.h"
#include "store/sql/SqlSystemConfig.h"
#include "store/sql/SqlTestStore.h"
#include "store/sql/SqlTreeReader.h"

namespace quarl::store {

struct SqlStores::Parts {
  explicit Parts(SqlSetup given)
      : setup(std::move(given)),
        database(setup),
        system(database, setup.service ? *setup.service : noService, setup.paths, setup.inspector),
        servers(database),
        groups(database),
        tests(database),
        alerts(database),
        log(database, setup.clock ? *setup.clock : systemClock),
        install(setup.paths),
        tree(database),
        configurations(database) {}

  SqlSetup setup;
  control::NoService noService;
  SystemClock systemClock;
  sql::Database database;
  sql::SqlSystemConfig system;
  sql::SqlServerStore servers;
  sql::SqlGroupStore groups;
  sql::SqlTestStore tests;
  sql::SqlAlertStore alerts;
  sql::SqlLogStore log;
  sql::SqlInstallConfig install;
  sql::SqlTreeReader tree;
  sql::SqlConfigurationStore configurations;
};

SqlStores::SqlStores(SqlSetup setup) : parts_(std::make_unique<Parts>(std::move(setup))) {}

SqlStores::~SqlStores() = default;

SystemConfig& SqlStores::System() {
  return parts_->system;
}

ServerStore& SqlStores::Servers() {
  return parts_->servers;
}

GroupStore& SqlStores::Groups() {
  return parts_->groups;
}

TestStore& SqlStores::Tests() {
  return parts_->tests;
}

AlertStore& SqlStores::Alerts() {
  return parts_->alerts;
}

LogStore& SqlStores::Log() {
  return parts_->log;
}

InstallConfig& SqlStores::Install() {
  return parts_->install;
}

TreeReader& SqlStores::Tree() {
  return parts_->tree;
}

ConfigurationStore& SqlStores::Configurations() {
  return parts_->configurations;
}

SqlStatistics SqlStores::Statistics() const {
  return parts_->database.Statistics();
}

void SqlStores::Open() {
  parts_->database.Read([](sql::Connection& /*connection*/) { return true; });
}

void SqlStores::ReadAhead() {
  parts_->tree.ReadAhead();
}

void SqlStores::CheckPlace(const SqlSetup& setup) {
  sql::MakeDialect(setup)->CheckPlace();
}

void SqlStores::Backup(const QString& path, Existing existing) {
  parts_->database.Read([&](sql::Connection& connection) {
    parts_->database.GetDialect().Backup(connection, path, existing == Existing::Replace);
    return true;
  });
}

namespace {

qint64 RevisionOf(sql::Connection& connection) {
  sql::Query query(connection, "SELECT revision FROM store_properties");
  return query.Next() ? query.Integer(0) : 0;
}

std::unique_ptr<sql::Connection> OpenWhole(sql::Dialect& dialect) {
  auto connection = dialect.Open(sql::Dialect::Missing::Create);
  sql::Migrate(*connection, dialect);
  dialect.Settle(*connection);
  return connection;
}

}  // namespace

void SqlStores::Restore(const SqlSetup& setup, const QString& backup) {
  const std::unique_ptr<sql::Dialect> dialect = sql::MakeDialect(setup);
  dialect->CheckBackup(backup);
  std::unique_ptr<sql::Connection> connection;
  qint64 before = 0;
  try {
    connection = OpenWhole(*dialect);
    before = RevisionOf(*connection);
    dialect->Restore(*connection, backup);
    sql::Migrate(*connection, *dialect);
  } catch (const sql::SqlError& error) {
    if (error.What() != sql::Fault::Damaged) throw;
    connection.reset();
    dialect->RestoreDamaged(backup);
    connection = OpenWhole(*dialect);
  }
  // Whoever read the configuration before has read another one.
  sql::Transaction transaction(*connection, sql::Connection::Access::Write);
  sql::Change(*connection, "UPDATE store_properties SET revision = $1", std::max(before, RevisionOf(*connection)) + 1);
  transaction.Commit();
}

}  // namespace quarl::store
