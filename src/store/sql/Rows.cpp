#include "store/sql/Rows.h"

#include <limits>

namespace quarl::store::sql {

Fields MakeFields(std::initializer_list<Field> fields) {
  return std::make_shared<const FieldList>(fields);
}

RecordSet Collect(Query& query, const Fields& fields) {
  RecordSet rows(fields);
  const int count = static_cast<int>(fields->size());
  while (query.Next()) {
    for (int column = 0; column < count; ++column) {
      if (query.IsNull(column)) {
        rows.AppendNull();
        continue;
      }
      switch ((*fields)[static_cast<std::size_t>(column)].type) {
        case FieldType::Integer:
          rows.AppendInteger(query.Int32(column));
          break;
        case FieldType::Text:
          rows.AppendText(query.Utf8(column));
          break;
        case FieldType::DateTime:
          rows.AppendInteger(TimeOf(query, column));
          break;
      }
    }
  }
  return rows;
}

qint64 TimeOf(Query& query, int column) {
  constexpr qint64 kFirst = -62'135'596'800'000;  // 0001-01-01T00:00:00Z
  constexpr qint64 kLast = 253'402'300'799'999;   // 9999-12-31T23:59:59.999Z
  const qint64 time = query.Integer(column);
  if (time < kFirst || time > kLast) ThrowDamaged(QStringLiteral("%1 is no time").arg(time));
  return time;
}

qint32 NextId(Connection& connection, const char* sequence) {
  Query query(connection,
              "UPDATE sequences SET last_id = last_id + 1 WHERE name = $1 AND last_id < $2 RETURNING last_id", sequence,
              std::numeric_limits<qint32>::max());
  return query.Next() ? query.Int32(0) : 0;
}

}  // namespace quarl::store::sql
