#include "store/sql/SqlStores.h"

#include <algorithm>

#include "base/Clock.h"
#include "control/ServiceControl.h"
#include "store/sql/CheckRequests.h"
#include "store/sql/Schema.h"
#include "store/sql/ServiceRow.h"
#include "store/sql/SqlAlertStore.h"
#include "store/sql/SqlConfigurationStore.h"
#include "store/sql/SqlGroupStore.h"
#include "store/sql/SqlInstallConfig.h"
#include "store/sql/SqlLogStore.h"
#include "store/sql/SqlServerStore.h"
#include "store/sql/SqlServiceStore.h"
#include "store/sql/SqlSystemConfig.h"
#include "store/sql/SqlTestStore.h"
#include "store/sql/SqlTreeReader.h"

namespace quarl::store {

struct SqlStores::Parts {
  explicit Parts(SqlSetup given)
      : setup(std::move(given)),
        database(setup),
        system(database, setup.service ? *setup.service : noService, setup.paths, setup.inspector, UsedClock()),
        requests(database, UsedClock(), setup),
        servers(database, requests),
        groups(database, requests),
        tests(database, requests),
        alerts(database),
        log(database, UsedClock()),
        install(setup.paths),
        tree(database),
        configurations(database),
        service(database) {}

  const Clock& UsedClock() const { return setup.clock ? *setup.clock : systemClock; }

  SqlSetup setup;
  control::NoService noService;
  SystemClock systemClock;
  sql::Database database;
  sql::SqlSystemConfig system;
  sql::CheckRequests requests;
  sql::SqlServerStore servers;
  sql::SqlGroupStore groups;
  sql::SqlTestStore tests;
  sql::SqlAlertStore alerts;
  sql::SqlLogStore log;
  sql::SqlInstallConfig install;
  sql::SqlTreeReader tree;
  sql::SqlConfigurationStore configurations;
  sql::SqlServiceStore service;
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

namespace {

class SqlChange final : public Change {
 public:
  explicit SqlChange(sql::Database& database) : database_(database) { database_.BeginChange(); }
  ~SqlChange() override { database_.EndChange(); }
  void Commit() override { database_.CommitChange(); }

 private:
  sql::Database& database_;
};

}  // namespace

std::unique_ptr<Change> SqlStores::BeginChange() {
  return std::make_unique<SqlChange>(parts_->database);
}

ConfigurationStore& SqlStores::Configurations() {
  return parts_->configurations;
}

ServiceStore& SqlStores::Service() {
  return parts_->service;
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

bool SqlStores::CheckAside() {
  return parts_->database.CheckAside();
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
  qint64 before = 0;
  const auto bringUpToDate = [&](sql::Connection& copy) {
    sql::Migrate(copy, *dialect);
    // Whoever read the configuration before has read another one.
    sql::Change(copy, "UPDATE store_properties SET revision = $1", std::max(before, RevisionOf(copy)) + 1);
    sql::ForgetService(copy);
  };
  try {
    const std::unique_ptr<sql::Connection> connection = OpenWhole(*dialect);
    before = RevisionOf(*connection);
    dialect->Restore(*connection, backup, bringUpToDate);
  } catch (const sql::SqlError& error) {
    if (error.What() != sql::Fault::Damaged) throw;
    dialect->RestoreDamaged(backup, bringUpToDate);
  }
}

}  // namespace quarl::store
