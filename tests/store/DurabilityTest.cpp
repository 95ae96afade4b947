// What survives a program that is killed, and how many statements reading takes.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

/// Writes records and reports each one when the store has it, until it is killed.
[[noreturn]] void WriteForEver(const StoreFolder& folder, int pipe) {
  SqlStores stores(folder.Setup());
  for (;;) {
    try {
      const qint32 id = stores.Servers().AddServer(QString(500, u'x'), Q("10.0.0.1"), 0);
      if (id < 1 || ::write(pipe, &id, sizeof id) != sizeof id) ::_exit(1);
      if (id % 3 == 0 && !stores.Log().AddLog(1, QString::number(id))) ::_exit(1);
    } catch (...) {
      ::_exit(1);
    }
  }
}

TEST(DurabilityTest, AKilledProgramLosesNothingThatItReported) {
  const StoreFolder folder;
  std::mt19937 random(std::random_device{}());
  qint32 last = 0;
  for (int round = 0; round < 8; ++round) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) WriteForEver(folder, ends[1]);
    ::close(ends[1]);
    const qint32 target = last + 1 + static_cast<qint32>(random() % 60);
    qint32 id = 0;
    while (last < target && ::read(ends[0], &id, sizeof id) == sizeof id) last = id;
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    while (::read(ends[0], &id, sizeof id) == sizeof id) last = id;  // reported before it died
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer gave up";
    ::close(ends[0]);

    SqlStores stores(folder.Setup());
    RecordSet servers = stores.Servers().GetServersByGroup(0);
    EXPECT_GE(servers.RowCount(), static_cast<std::size_t>(last));
    EXPECT_LE(servers.RowCount(), static_cast<std::size_t>(last) + 1);
    servers.Find(Q("[IDServer] = %1").arg(last));
    EXPECT_FALSE(servers.Eof());
    EXPECT_EQ(AskSql(folder.StorePath(), "PRAGMA integrity_check"), Q("ok"));
    EXPECT_EQ(AskSql(folder.StorePath(), "PRAGMA foreign_key_check"), QString());
    last = static_cast<qint32>(servers.RowCount());
  }
}

class StatementCounts : public ::testing::TestWithParam<int> {
 protected:
  StatementCounts() {
    const qint32 type = folder_.AddTestType(stores_, Q("Ping"));
    const qint32 group = stores_.Groups().AddGroup(Q("g"), {});
    for (int i = 0; i < GetParam(); ++i) {
      servers_.push_back(stores_.Servers().AddServer(QString::number(i), {}, group));
      EXPECT_GT(stores_.Tests().AddTest(servers_.back(), type, {}), 0);
    }
  }
  /// Statements executed, prepared, and transactions of an operation.
  std::array<quint64, 3> Cost(const std::function<void()>& operation) {
    const SqlStatistics before = stores_.Statistics();
    operation();
    const SqlStatistics after = stores_.Statistics();
    return {after.statementsExecuted - before.statementsExecuted, after.statementsPrepared - before.statementsPrepared,
            after.transactions - before.transactions};
  }
  using Counts = std::array<quint64, 3>;
  StoreFolder folder_;
  SqlStores stores_{folder_.Setup(StoreLocation::InMemory())};
  std::vector<qint32> servers_;
};

TEST_P(StatementCounts, ATreeTakesFiveAndNoneIsPreparedTwice) {
  const auto read = [&] { EXPECT_EQ(stores_.Tree().ReadTree().servers.size(), servers_.size()); };
  EXPECT_EQ(Cost(read), (Counts{5, 5, 1}));
  EXPECT_EQ(Cost(read), (Counts{5, 0, 1}));
}

TEST_P(StatementCounts, AQueryIsOneStatementWithoutATransaction) {
  const auto read = [&] {
    for (const qint32 id : servers_) {
      EXPECT_EQ(stores_.Tests().GetTestsByServer(id).RowCount(), 1U);
      EXPECT_TRUE(stores_.Alerts().GetAlertsByServer(id).Eof());
    }
  };
  EXPECT_EQ(Cost(read), (Counts{2 * servers_.size(), 2, 0}));
  EXPECT_EQ(Cost(read), (Counts{2 * servers_.size(), 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(Servers, StatementCounts, ::testing::Values(3, 300));

}  // namespace
}  // namespace quarl::store
