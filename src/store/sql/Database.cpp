#include "store/sql/Database.h"

#include "store/sql/Schema.h"

namespace quarl::store::sql {
namespace {

SqlStatistics Sum(const SqlStatistics& a, const SqlStatistics& b) {
  return {a.statementsExecuted + b.statementsExecuted, a.statementsPrepared + b.statementsPrepared,
          a.transactions + b.transactions};
}

}  // namespace

Database::Database(const SqlSetup& setup) : dialect_(MakeDialect(setup)) {}

Connection& Database::Use() {
  if (connection_ && !connection_->IsCurrent()) Close();
  if (!connection_) Open();
  return *connection_;
}

void Database::Open() {
  auto connection = dialect_->Open(wasOpen_ ? Dialect::Missing::Fail : Dialect::Missing::Create);
  Migrate(*connection, *dialect_);
  dialect_->Settle(*connection);
  {
    Query query(*connection, "SELECT id_test_state, name FROM test_states");
    while (query.Next()) {
      const qint64 state = query.Integer(0);
      if (state >= 1 && state <= 3) stateWords_[static_cast<std::size_t>(state - 1)] = query.Utf8(1);
    }
  }
  connection->Counters() = {};
  connection_ = std::move(connection);
  wasOpen_ = true;
  ++openings_;
}

void Database::Close() {
  if (connection_) closed_ = Statistics();
  connection_.reset();
}

SqlStatistics Database::Statistics() const {
  return connection_ ? Sum(closed_, connection_->Counters()) : closed_;
}

const std::string* Database::StateWord(qint64 state) const {
  return state >= 1 && state <= 3 ? &stateWords_[static_cast<std::size_t>(state - 1)] : nullptr;
}

}  // namespace quarl::store::sql
