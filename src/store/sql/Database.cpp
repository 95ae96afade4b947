#include "store/sql/Database.h"

#include <chrono>
#include <system_error>

#include "store/sql/Schema.h"

namespace quarl::store::sql {
namespace {

SqlStatistics Sum(const SqlStatistics& a, const SqlStatistics& b) {
  return {a.statementsExecuted + b.statementsExecuted, a.statementsPrepared + b.statementsPrepared,
          a.transactions + b.transactions};
}

}  // namespace

Database::Database(const SqlSetup& setup) : dialect_(MakeDialect(setup)) {}

Connection& Database::Use(Connection::Access access) {
  if (connection_ && !connection_->IsCurrent()) Close();
  if (change_ == ChangeState::Broken) {
    throw SqlError(Fault::Other, QStringLiteral("An earlier operation of the same change failed."));
  }
  if (access == Connection::Access::Write || HasVerdict()) EndCheck();
  if (!connection_) Open();
  return *connection_;
}

void Database::Open() {
  auto connection = dialect_->Open(wasOpen_ ? Dialect::Missing::Fail : Dialect::Missing::Create);
  Migrate(*connection, *dialect_);
  dialect_->Settle(*connection);
  Keep(std::move(connection), true);
}

void Database::Keep(std::unique_ptr<Connection> connection, bool checked) {
  {
    Query query(*connection, "SELECT id_test_state, name FROM test_states");
    while (query.Next()) {
      const qint64 state = query.Integer(0);
      if (state >= 1 && state <= 3) stateWords_[static_cast<std::size_t>(state - 1)] = query.Utf8(1);
    }
  }
  connection->Counters() = {};
  connection_ = std::move(connection);
  checked_ = checked;
  wasOpen_ = true;
  ++openings_;
}

void Database::OpenAhead() {
  if (connection_) return;
  std::unique_ptr<Connection> connection = dialect_->OpenUnchecked();
  if (connection) {
    Keep(std::move(connection), false);
  } else {
    Open();
  }
}

bool Database::CheckAside() {
  if (!connection_ || checked_) return false;
  if (!verdict_.valid()) {
    try {
      verdict_ = std::async(std::launch::async, [this] { dialect_->CheckStore(); });
    } catch (const std::system_error&) {
      EndCheck();  // no thread to spare
      return false;
    }
  }
  if (!HasVerdict()) return true;
  EndCheck();
  return false;
}

bool Database::HasVerdict() const {
  return verdict_.valid() && verdict_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

void Database::EndCheck() {
  if (!connection_ || checked_) return;
  try {
    if (verdict_.valid()) {
      verdict_.get();
    } else {
      dialect_->CheckStore();
    }
    dialect_->Settle(*connection_);
    checked_ = true;
  } catch (...) {
    Close();  // the next operation opens the store in full, and finds the same
    throw;
  }
}

void Database::BeginChange() {
  Guard([&] {
    if (change_ != ChangeState::None) throw SqlError(Fault::Other, QStringLiteral("A change is being made already."));
    Use(Connection::Access::Write).Begin(Connection::Access::Write);
    ++connection_->Counters().transactions;
    change_ = ChangeState::Open;
  });
}

void Database::CommitChange() {
  Guard([&] {
    Use(Connection::Access::Write).Commit();
    change_ = ChangeState::None;
  });
}

void Database::EndChange() noexcept {
  if (change_ == ChangeState::None) return;
  change_ = ChangeState::None;
  if (connection_) connection_->Rollback();
}

void Database::Close() {
  if (change_ == ChangeState::Open) change_ = ChangeState::Broken;
  if (connection_) closed_ = Statistics();
  verdict_ = {};
  connection_.reset();
}

SqlStatistics Database::Statistics() const {
  return connection_ ? Sum(closed_, connection_->Counters()) : closed_;
}

const std::string* Database::StateWord(qint64 state) const {
  return state >= 1 && state <= 3 ? &stateWords_[static_cast<std::size_t>(state - 1)] : nullptr;
}

}  // namespace quarl::store::sql
