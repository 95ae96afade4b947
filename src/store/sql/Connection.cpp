#include "store/sql/Connection.h"

#include <limits>

#include "base/Utf8.h"
#include "store/sql/SqlError.h"

namespace quarl::store::sql {

void ThrowDamaged(const QString& what) {
  throw SqlError(Fault::Other, QStringLiteral("The store is damaged: %1.").arg(what));
}

Statement& Connection::Prepared(std::string_view sql) {
  const auto known = statements_.find(sql);
  if (known != statements_.end()) return *known->second;
  ++counters_.statementsPrepared;
  return *statements_.emplace(std::string(sql), Prepare(sql)).first->second;
}

namespace {

template <typename Number>
Number Narrow(qint64 value) {
  if (value < std::numeric_limits<Number>::min() || value > std::numeric_limits<Number>::max()) {
    ThrowDamaged(QStringLiteral("it holds the number %1 where only smaller ones can stand").arg(value));
  }
  return static_cast<Number>(value);
}

}  // namespace

QString Query::Text(int column) {
  const std::string_view text = Utf8(column);
  return FromUtf8(text);
}

qint32 Query::Int32(int column) {
  return Narrow<qint32>(Integer(column));
}

qint16 Query::Int16(int column) {
  return Narrow<qint16>(Integer(column));
}

void Query::Bind(const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  Bind(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

Transaction::Transaction(Connection& connection, Connection::Access access) : connection_(connection) {
  connection_.Begin(access);
  ++connection_.Counters().transactions;
}

Transaction::~Transaction() {
  if (open_) connection_.Rollback();
}

void Transaction::Commit() {
  connection_.Commit();
  open_ = false;
}

}  // namespace quarl::store::sql
