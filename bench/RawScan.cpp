#include "RawScan.h"

#include <sqlite3.h>

#include <stdexcept>
#include <string_view>

namespace quarl::bench {
namespace {

constexpr const char* kTree[5] = {
    "SELECT 0, id_group, 0, name FROM groups WHERE id_group > 0 ORDER BY name, id_group DESC",
    "SELECT id_group, id_server, 0, name FROM servers ORDER BY id_group, name, id_server DESC",
    "SELECT id_server, id_test, id_test_type, name FROM tests ORDER BY id_server, id_test",
    "SELECT id_server, id_alert, id_alert_type, name FROM alerts WHERE id_server IS NOT NULL"
    " ORDER BY id_server, position, id_alert",
    "SELECT id_group, id_alert, id_alert_type, name FROM alerts WHERE id_group IS NOT NULL"
    " ORDER BY id_group, position, id_alert"};

constexpr const char* kServers =
    "SELECT s.id_server, st.id_test_state, s.name, s.ip_address, g.name FROM servers s"
    " LEFT JOIN server_states st ON st.id_server = s.id_server"
    " LEFT JOIN groups g ON g.id_group = s.id_group AND g.id_group > 0 ORDER BY s.name, s.id_server DESC";

constexpr const char* kLog = "SELECT id_severity, logged_ms, description FROM log_records ORDER BY id_log";

std::string_view TextOf(sqlite3_stmt* statement, int column) {
  const auto* bytes = static_cast<const char*>(static_cast<const void*>(sqlite3_column_text(statement, column)));
  return {bytes == nullptr ? "" : bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

}  // namespace

std::size_t RawScan::Rows::Count() const {
  std::size_t count = 0;
  for (const auto& part : rows) count += part.size();
  return count;
}

RawScan::RawScan(const QString& path) {
  if (sqlite3_open_v2(path.toUtf8().constData(), &connection_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) !=
      SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection_));
  }
  Execute("PRAGMA cache_size = -65536");
}

RawScan::~RawScan() {
  sqlite3_close(connection_);
}

void RawScan::Execute(const char* sql) {
  if (sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection_));
  }
}

template <typename OnRow>
void RawScan::Read(const char* sql, OnRow onRow) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(connection_, sql, -1, &statement, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection_));
  }
  while (sqlite3_step(statement) == SQLITE_ROW) onRow(statement);
  sqlite3_finalize(statement);
}

RawScan::Rows RawScan::Tree() {
  Rows tree;
  Execute("BEGIN");
  for (std::size_t part = 0; part < std::size(kTree); ++part) {
    Read(kTree[part], [&](sqlite3_stmt* row) {
      const std::string_view name = TextOf(row, 3);
      tree.rows[part].push_back({sqlite3_column_int(row, 0), sqlite3_column_int(row, 1), sqlite3_column_int(row, 2),
                                 static_cast<unsigned>(name.size()), tree.texts.size()});
      tree.texts.append(name);
    });
  }
  Execute("COMMIT");
  return tree;
}

RawScan::List RawScan::ReadList(const char* sql, int numbers, int texts) {
  List list;
  Execute("BEGIN");
  Read(sql, [&](sqlite3_stmt* statement) {
    ListRow row{{}, {}, list.texts.size()};
    for (int i = 0; i < numbers; ++i) row.numbers[i] = sqlite3_column_int64(statement, i);
    for (int i = 0; i < texts; ++i) {
      const std::string_view text = TextOf(statement, numbers + i);
      row.lengths[i] = static_cast<unsigned>(text.size());
      list.texts.append(text);
    }
    list.rows.push_back(row);
  });
  Execute("COMMIT");
  return list;
}

RawScan::List RawScan::Servers() {
  return ReadList(kServers, 2, 3);
}

RawScan::List RawScan::Log() {
  return ReadList(kLog, 2, 1);
}

}  // namespace quarl::bench
