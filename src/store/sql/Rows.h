#pragma once

#include <initializer_list>

#include "store/sql/Connection.h"

namespace quarl::store::sql {

/// Fields of a query, made once and shared by all its results.
using Fields = std::shared_ptr<const FieldList>;
Fields MakeFields(std::initializer_list<Field> fields);

/// All rows of a query whose columns are these fields in this order. Integer fields are 32-bit numbers, DateTime
/// fields milliseconds of the years 1 to 9999; other values are damage of the store.
RecordSet Collect(Query& query, const Fields& fields);
template <typename... Arguments>
RecordSet Fetch(Connection& connection, const Fields& fields, std::string_view sql, const Arguments&... arguments) {
  Query query(connection, sql, arguments...);
  return Collect(query, fields);
}
/// A stored time; a value out of its range is damage of the store.
qint64 TimeOf(Query& query, int column);

/// The first column of the first row; nothing when there is no row.
template <typename... Arguments>
std::optional<QString> FetchText(Connection& connection, std::string_view sql, const Arguments&... arguments) {
  Query query(connection, sql, arguments...);
  if (!query.Next()) return std::nullopt;
  return query.Text(0);
}

/// The next id of a sequence; 0 when all are used up. Ids are never given twice.
qint32 NextId(Connection& connection, const char* sequence);

}  // namespace quarl::store::sql
