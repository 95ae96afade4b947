#include "store/sql/SqlTestStore.h"

#include "store/sql/Rows.h"

namespace quarl::store::sql {
namespace {

constexpr qint32 kNotRunYet = 2;

void AppendTextOrNull(RecordSet& rows, Query& query, int column) {
  if (query.IsNull(column)) {
    rows.AppendNull();
  } else {
    rows.AppendText(query.Utf8(column));
  }
}

}  // namespace

bool SqlTestStore::CheckTest(qint32 idTest) {
  return requests_.RunTest(idTest);
}

qint32 SqlTestStore::AddTest(qint32 idServer, qint32 idTestType, const QString& properties) {
  return database_.Write([&](Connection& connection) {
    const qint32 id = NextId(connection, "tests");
    const bool added =
        id > 0 && Change(connection,
                         "INSERT INTO tests (id_test, id_server, id_test_type, name, properties)"
                         " SELECT $1, s.id_server, t.id_test_type, t.name, $2 FROM test_types t, servers s"
                         " WHERE t.id_test_type = $3 AND s.id_server = $4",
                         id, properties, idTestType, idServer) > 0;
    return added ? id : 0;
  });
}

bool SqlTestStore::RemoveTest(qint32 idTest) {
  return database_.Write(
      [&](Connection& connection) { return Change(connection, "DELETE FROM tests WHERE id_test = $1", idTest) > 0; });
}

RecordSet SqlTestStore::GetTestsByServer(qint32 idServer) {
  static const Fields fields = MakeFields({{"IDTest", FieldType::Integer},
                                           {"TestName", FieldType::Text},
                                           {"IDTestType", FieldType::Integer},
                                           {"TestType", FieldType::Text},
                                           {"IDTestState", FieldType::Integer},
                                           {"LastExecution", FieldType::DateTime},
                                           {"TestState", FieldType::Text},
                                           {"LastResult", FieldType::Text}});
  return database_.Read([&](Connection& connection) {
    Query query(connection,
                "SELECT t.id_test, t.name, t.id_test_type, y.name, r.id_test_state, r.last_execution_ms, r.last_result"
                " FROM tests t LEFT JOIN test_types y ON y.id_test_type = t.id_test_type"
                " LEFT JOIN test_results r ON r.id_test = t.id_test WHERE t.id_server = $1 ORDER BY t.id_test",
                idServer);
    RecordSet rows(fields);
    while (query.Next()) {
      rows.AppendInteger(query.Int32(0));
      rows.AppendText(query.Utf8(1));
      rows.AppendInteger(query.Int32(2));
      AppendTextOrNull(rows, query, 3);
      const qint32 state = query.IsNull(4) ? kNotRunYet : query.Int32(4);
      rows.AppendInteger(state);
      if (query.IsNull(5)) {
        rows.AppendNull();
      } else {
        rows.AppendInteger(TimeOf(query, 5));
      }
      if (const std::string* word = database_.StateWord(state)) {
        rows.AppendText(*word);
      } else {
        rows.AppendNull();
      }
      AppendTextOrNull(rows, query, 6);
    }
    return rows;
  });
}

std::optional<QString> SqlTestStore::GetTestProperties(qint32 idTest) {
  return database_.Read([&](Connection& connection) {
    return FetchText(connection, "SELECT properties FROM tests WHERE id_test = $1", idTest);
  });
}

bool SqlTestStore::SetTestProperties(qint32 idTest, const QString& properties) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE tests SET properties = $1 WHERE id_test = $2", properties, idTest) > 0;
  });
}

std::optional<QString> SqlTestStore::GetTestModule(qint32 idTest) {
  return database_.Read([&](Connection& connection) {
    return FetchText(connection,
                     "SELECT y.module FROM tests t JOIN test_types y ON y.id_test_type = t.id_test_type"
                     " WHERE t.id_test = $1",
                     idTest);
  });
}

bool SqlTestStore::RenameTest(qint32 idTest, const QString& name) {
  return database_.Write([&](Connection& connection) {
    return Change(connection, "UPDATE tests SET name = $1 WHERE id_test = $2", name, idTest) > 0;
  });
}

}  // namespace quarl::store::sql
