#include "BenchStore.h"

#include <sqlite3.h>

#include <map>
#include <stdexcept>

namespace quarl::bench {
namespace {

constexpr int kGroups = 100;

// Servers of a group are numbered through in another order than their names sort: 7919 is prime to the powers of ten.
constexpr const char* kRows = R"sql(
BEGIN;
INSERT INTO test_types (id_test_type, name, module) VALUES (1, 'Ping', 'ping.dll'), (2, 'TCP port', 'tcpport.dll'),
  (3, 'HTTP', 'http.dll');
INSERT INTO alert_types (id_alert_type, name, module) VALUES (1, 'E-mail', 'email.dll');
CREATE TEMP TABLE n (i INTEGER PRIMARY KEY);
WITH RECURSIVE c(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM c WHERE i + 1 < :servers)
  INSERT INTO n SELECT i FROM c;
INSERT INTO groups (id_group, name, description)
  SELECT i + 1, printf('Group %03d', i), '' FROM n WHERE i < :groups;
INSERT INTO servers (id_server, id_group, name, ip_address)
  SELECT i + 1 + :groups, i * :groups / :servers + 1, printf('server-%06d', i * 7919 % :servers),
         printf('10.%d.%d.%d', i / 65536, i / 256 % 256, i % 256) FROM n WHERE i < :servers;
INSERT INTO server_states (id_server, id_test_state) SELECT i + 1 + :groups, i % 3 + 1 FROM n WHERE i < :servers;
INSERT INTO tests (id_test, id_server, id_test_type, name, properties)
  SELECT i * 5 + k + 1, i + 1 + :groups, k % 3 + 1, printf('Test %d', k), ''
  FROM n, (SELECT 0 AS k UNION SELECT 1 UNION SELECT 2 UNION SELECT 3 UNION SELECT 4) WHERE i < :servers;
INSERT INTO test_results (id_test, id_test_state, last_execution_ms, last_result)
  SELECT id_test, id_test % 3 + 1, 1700000000000 + id_test, '12 ms' FROM tests;
INSERT INTO alerts (id_alert, id_server, position, id_alert_type, name, properties)
  SELECT i + 1, i + 1 + :groups, i + 1, 1, 'Mail to the administrator', '' FROM n WHERE i < :servers;
INSERT INTO log_records (logged_ms, id_severity, description)
  SELECT 1700000000000 + i * 1000, i % 3 + 1, printf('Test %d of server-%06d has been run.', i % 5, i)
  FROM n WHERE i < :servers;
DROP TABLE n;
COMMIT;
PRAGMA wal_checkpoint(TRUNCATE);
ANALYZE;
)sql";

void Fill(const QString& path, int servers) {
  QString script = QString::fromUtf8(kRows);
  script.replace(QStringLiteral(":servers"), QString::number(servers));
  script.replace(QStringLiteral(":groups"), QString::number(kGroups));
  sqlite3* connection = nullptr;
  const bool open = sqlite3_open(path.toUtf8().constData(), &connection) == SQLITE_OK;
  if (!open || sqlite3_exec(connection, script.toUtf8().constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection));
  }
  sqlite3_close(connection);
}

}  // namespace

BenchStore::BenchStore(int servers) : path_(folder_.filePath(QStringLiteral("bench.db"))) {
  const store::SqlSetup setup{.location = store::StoreLocation::File(path_),
                              .paths = InstallPaths(folder_.path()),
                              .inspector = {},
                              .syncEveryChange = false};
  store::SqlStores(setup).Open();
  if (servers > 0) Fill(path_, servers);
  stores_ = std::make_unique<store::SqlStores>(setup);
}

BenchStore& BenchStore::Of(int servers) {
  static std::map<int, std::unique_ptr<BenchStore>> stores;
  std::unique_ptr<BenchStore>& store = stores[servers];
  if (!store) store = std::make_unique<BenchStore>(servers);
  return *store;
}

}  // namespace quarl::bench
