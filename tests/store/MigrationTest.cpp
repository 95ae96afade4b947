// Stores of older versions come whole into this one, or stay what they were.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

class MigrationTest : public ::testing::Test {
 protected:
  MigrationTest() {
    folder_.Write(Q("quarl.db"), {});
    RunSql(folder_.StorePath(), BytesOf(Q(QUARL_SOURCE_DIR "/tests/store/fixtures/version1.sql")));
  }
  QString Version() { return AskSql(folder_.StorePath(), "PRAGMA user_version"); }
  QString Definitions() {
    return AskSql(folder_.StorePath(),
                  "SELECT group_concat(sql, ';') FROM (SELECT sql FROM sqlite_schema ORDER BY name)");
  }
  StoreFolder folder_;
};

TEST_F(MigrationTest, AVersion1StoreKeepsEverythingItHolds) {
  SqlStores stores(folder_.Setup());
  stores.Open();
  EXPECT_EQ(Version(), Q("2"));
  const ConfigurationSnapshot snapshot = stores.Configurations().Read();
  EXPECT_EQ(snapshot.storeId, Q("00000000-0000-0000-0000-000000000001"));
  const Configuration& all = snapshot.configuration;
  ASSERT_EQ(all.groups.size(), 1U);
  ASSERT_EQ(all.groups[0].servers.size(), 1U);
  const ServerConfiguration& north = all.groups[0].servers[0];
  EXPECT_EQ(all.groups[0].description, Q("at the edge"));
  EXPECT_EQ(north.tests, (std::vector<TestConfiguration>{{1, 1, Q("Echo"), QString::fromUtf8("a\0b", 3)}}));
  EXPECT_EQ(north.alerts[0].properties, Q("to=a@example.org"));
  EXPECT_EQ(all.root.servers[0].failThreshold, qint16(32000));
  EXPECT_EQ(all.root.servers[0].schedule, (ScheduleRecord{true, QDate(2024, 3, 31), QTime(2, 30), 1, 3}));
  EXPECT_EQ(all.root.alerts[0].name, Q("All"));
  EXPECT_EQ(Column(stores.Log().GetLogs(), "LogDescription"), Q("north: no answer"));

  const StoredStates states = stores.Service().ReadStates();
  ASSERT_EQ(states.tests.size(), 1U);
  const TestResult kept{.idTest = 1,
                        .state = TestState::Failed,
                        .lastExecutionMs = 1'700'000'000'000,
                        .text = Q("no answer"),
                        .performance = {},
                        .consecutiveFailures = 2,
                        .failed = false,
                        .sinceMs = 0};
  EXPECT_EQ(states.tests[0], kept);
  EXPECT_EQ(states.servers, (std::vector<ServerState>{{2, TestState::Failed, false, 0}}));
  EXPECT_EQ(stores.Service().LogRetention(), kDefaultLogRetention);
  EXPECT_EQ(stores.Servers().AddServer(Q("new"), {}, 0), 4);
}

TEST_F(MigrationTest, AStoreBroughtHereIsDefinedLikeANewOne) {
  SqlStores(folder_.Setup()).Open();
  const QString brought = Definitions();
  ASSERT_TRUE(QFile::remove(folder_.StorePath()));
  SqlStores(folder_.Setup()).Open();
  EXPECT_EQ(brought, Definitions());
}

TEST_F(MigrationTest, ABackupOfVersion1IsCheckedAndRestored) {
  const QString backup = folder_.Path(Q("backup.db"));
  RunSql(folder_.StorePath(), "VACUUM INTO '" + backup.toUtf8() + "'");
  ASSERT_TRUE(QFile::remove(folder_.StorePath()));
  EXPECT_EQ(ErrorOf([&] { SqlStores::Restore(folder_.Setup(), backup); }), QString());
  EXPECT_EQ(Version(), Q("2"));
  EXPECT_EQ(Column(SqlStores(folder_.Setup()).Servers().GetAllServers(0), "ServerName"), Q("north south"));
  RunSql(backup, "DROP INDEX servers_tree");
  EXPECT_TRUE(ErrorOf([&] { SqlStores::Restore(folder_.Setup(), backup); }).contains(Q("servers_tree")));
}

TEST_F(MigrationTest, AStepThatFailsHalfWayLeavesVersion1) {
  RunSql(folder_.StorePath(), "CREATE TABLE outbox (taken TEXT)");
  const QString before = Definitions();
  EXPECT_NE(ErrorOf([&] { SqlStores(folder_.Setup()).Open(); }), QString());
  EXPECT_EQ(Version(), Q("1"));
  EXPECT_EQ(Definitions(), before);
}

TEST_F(MigrationTest, AProgramKilledOverItLeavesOneVersionOrTheOther) {
  const QString before = Definitions();
  const QByteArray script = BytesOf(Q(QUARL_SOURCE_DIR "/tests/store/fixtures/version1.sql"));
  std::mt19937 random(std::random_device{}());
  int old = 0;
  for (int round = 0; round < 200 && (round < 15 || old < 5); ++round) {
    for (const char* part : {"", "-wal", "-shm"}) QFile::remove(folder_.StorePath() + QLatin1String(part));
    folder_.Write(Q("quarl.db"), {});
    RunSql(folder_.StorePath(), script);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      SqlStores stores(folder_.Setup());
      std::ignore = ErrorOf([&] { stores.Open(); });
      for (;;) ::pause();
    }
    ::usleep(static_cast<useconds_t>(random() % 12'000));  // the moment of the kill is what is tried out
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    if (Version() == Q("1")) {
      ++old;
      EXPECT_EQ(Definitions(), before);
    }
    SqlStores stores(folder_.Setup());
    EXPECT_EQ(stores.Service().ReadStates().tests.size(), 1U);
    EXPECT_EQ(AskSql(folder_.StorePath(), "PRAGMA integrity_check"), Q("ok"));
  }
  EXPECT_GE(old, 5) << "no kill came early enough";
}

}  // namespace
}  // namespace quarl::store
