#include "store/sql/SqlTreeReader.h"

namespace quarl::store::sql {
namespace {

using Part = TreeRows::Part;

struct PartQuery {
  Part part;
  std::vector<TreeRow> TreeRows::*rows;
  const char* sql;  // owner, id, type, name
};

constexpr PartQuery kQueries[] = {
    {Part::Groups, &TreeRows::groups,
     "SELECT 0, id_group, 0, name FROM groups WHERE id_group > 0 ORDER BY name, id_group DESC"},
    {Part::Servers, &TreeRows::servers,
     "SELECT id_group, id_server, 0, name FROM servers ORDER BY id_group, name, id_server DESC"},
    {Part::Tests, &TreeRows::tests,
     "SELECT id_server, id_test, id_test_type, name FROM tests ORDER BY id_server, id_test"},
    {Part::ServerAlerts, &TreeRows::serverAlerts,
     "SELECT id_server, id_alert, id_alert_type, name FROM alerts WHERE id_server IS NOT NULL"
     " ORDER BY id_server, position, id_alert"},
    {Part::GroupAlerts, &TreeRows::groupAlerts,
     "SELECT id_group, id_alert, id_alert_type, name FROM alerts WHERE id_group IS NOT NULL"
     " ORDER BY id_group, position, id_alert"},
};

// Room for so many rows costs nothing but addresses, and growing to it would copy and touch twice as much memory.
constexpr std::size_t kRoom = 1 << 16;

void ReadPart(Connection& connection, const PartQuery& part, TreeRows& tree) {
  std::vector<TreeRow>& rows = tree.*part.rows;
  rows.reserve(kRoom);
  Query query(connection, part.sql);
  while (query.Next()) {
    TreeRow row{.owner = query.Int32(0), .id = query.Int32(1), .type = query.Int32(2)};
    const std::string_view name = query.Utf8(3);
    row.textOffset = tree.texts.size();
    row.textLength = static_cast<quint32>(name.size());
    tree.texts.append(name);
    rows.push_back(row);
  }
}

}  // namespace

void SqlTreeReader::ReadAhead() {
  database_.OpenAhead();
  std::string mark = database_.Read([](Connection& connection) { return connection.ChangeMark(); });
  const quint64 opening = database_.Openings();
  ahead_ = Ahead{opening, std::move(mark), ReadNow()};
}

bool SqlTreeReader::IsCurrent(const Ahead& ahead) {
  try {
    return !ahead.tree.failure &&
           database_.Read([&](Connection& connection) { return connection.ChangeMark() == ahead.mark; }) &&
           database_.Openings() == ahead.opening;
  } catch (const StoreError&) {
    return false;  // reading anew tells what is wrong
  }
}

TreeRows SqlTreeReader::ReadTree() {
  std::optional<Ahead> ahead;
  ahead.swap(ahead_);
  if (ahead && IsCurrent(*ahead)) return std::move(ahead->tree);
  return ReadNow();
}

TreeRows SqlTreeReader::ReadNow() {
  TreeRows tree;
  Part part = Part::Groups;
  try {
    database_.ReadAtOnce([&](Connection& connection) {
      for (const PartQuery& query : kQueries) {
        part = query.part;
        ReadPart(connection, query, tree);
      }
      return true;
    });
  } catch (const StoreError& error) {
    tree.failure = TreeRows::Failure{part, error};
  }
  return tree;
}

}  // namespace quarl::store::sql
