
#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

Configuration Sample() {
  const ScheduleRecord daily{true, QDate(2024, 1, 31), QTime(6, 30), 1, 3};
  Configuration c;
  c.testTypes = {{2, Q("Ping"), Q("Ping.dll")}, {5, Q("Http"), Q("Http.dll")}};
  c.alertTypes = {{1, Q("Mail"), Q("Mail.dll")}};
  c.root.schedule = daily;
  c.root.alerts = {{9, 1, Q("Mail"), QString(QChar(0))}};
  ServerConfiguration server{12,
                             Q("s"),
                             Q("10.0.0.1"),
                             qint16(7),
                             daily,
                             {{3, 5, Q("web"), Q("u")}, {4, 2, Q("echo"), {}}},
                             {{8, 1, Q("b"), {}}, {6, 1, Q("a"), {}}}};
  c.groups = {{11, Q("A"), Q("d"), std::nullopt, {server}, {}}, {10, Q("B"), {}, daily, {}, {{7, 1, Q("x"), {}}}}};
  return c;
}

class ConfigurationTest : public ::testing::Test {
 protected:
  void Write(const Configuration& configuration) {
    stores_.Configurations().Write(configuration, stores_.Configurations().Read().revision);
  }
  Configuration Read() { return stores_.Configurations().Read().configuration; }

  StoreFolder folder_;
  SqlStores stores_{folder_.Setup()};
};

TEST_F(ConfigurationTest, ComesBackExactlyAndRaisesTheSequences) {
  Write(Sample());
  EXPECT_EQ(Read(), Sample());
  EXPECT_EQ(stores_.Groups().AddGroup({}, {}), 13);
  EXPECT_EQ(stores_.Tests().AddTest(12, 2, {}), 5);
  EXPECT_EQ(stores_.Alerts().AddGroupAlert(0, 1, {}), 10);
  SqlStores other(folder_.Setup(StoreLocation::InMemory()));
  other.Configurations().Write(Read(), other.Configurations().Read().revision);
  EXPECT_EQ(other.Configurations().Read().configuration, Read());
}

TEST_F(ConfigurationTest, NothingIsPutBehindTheLastPosition) {
  Write(Sample());
  RunSql(folder_.StorePath(), "UPDATE alerts SET position = 9223372036854775807 WHERE id_alert = 6");
  EXPECT_EQ(Read(), Sample());
  Configuration longer = Sample();
  longer.groups[0].servers[0].alerts.push_back({0, 1, Q("c"), {}});
  EXPECT_TRUE(ErrorOf([&] { Write(longer); }).contains(Q("no place left behind the last alert")));
  EXPECT_EQ(Read(), Sample());
}

TEST_F(ConfigurationTest, ChangesMovesAddsAndRemovesKeepingResults) {
  Write(Sample());
  RunSql(folder_.StorePath(),
         "INSERT INTO test_results (id_test, id_test_state, last_execution_ms, last_result)"
         " VALUES (3, 3, 1000, 'refused'), (4, 1, 2000, 'ok');"
         "INSERT INTO server_states (id_server, id_test_state) VALUES (12, 3)");
  Configuration changed = Sample();
  ServerConfiguration server = changed.groups[0].servers[0];
  server.name = Q("renamed");
  server.schedule.reset();
  server.failThreshold.reset();
  server.tests.pop_back();
  server.tests[0].name = Q("site");
  std::swap(server.alerts[0], server.alerts[1]);
  server.alerts.push_back(changed.root.alerts[0]);
  changed.root.alerts.clear();
  changed.root.schedule.reset();
  ServerConfiguration added;
  added.name = Q("new");
  added.tests = {{0, 5, Q("web"), {}}};
  changed.groups[1].servers = {added, server};
  changed.groups.erase(changed.groups.begin());
  changed.groups.push_back({0, Q("C"), {}, std::nullopt, {}, {{0, 1, Q("n"), {}}}});
  Write(changed);

  changed.groups[0].servers[0].id = 13;
  changed.groups[0].servers[0].tests[0].id = 5;
  changed.groups[1].id = 14;
  changed.groups[1].alerts[0].id = 10;
  EXPECT_EQ(Read(), changed);
  EXPECT_EQ(Column(stores_.Tests().GetTestsByServer(12), "LastResult"), Q("refused"));
  EXPECT_EQ(Column(stores_.Tests().GetTestsByServer(12), "TestState"), Q("failed"));
  EXPECT_EQ(Column(stores_.Servers().GetServersByGroup(10), "IDTestState"), Q("- 3"));
  EXPECT_EQ(AskSql(folder_.StorePath(), "SELECT count(*) FROM test_results"), Q("1"));
}

TEST_F(ConfigurationTest, AChangeInTheMeantimeIsNotOverwritten) {
  Write(Sample());
  const ConfigurationSnapshot snapshot = stores_.Configurations().Read();
  stores_.Configurations().Write(snapshot.configuration, snapshot.revision);
  EXPECT_EQ(stores_.Configurations().Read().revision, snapshot.revision);  // nothing was changed
  ASSERT_TRUE(stores_.Log().AddLog(1, {}));                                // no configuration
  ASSERT_FALSE(stores_.Tests().RenameTest(99, {}));                        // refused
  EXPECT_EQ(stores_.Configurations().Read().revision, snapshot.revision);
  SqlStores other(folder_.Setup());
  ASSERT_TRUE(other.Tests().SetTestProperties(3, Q("v")));
  EXPECT_THROW(stores_.Configurations().Write({}, snapshot.revision), StoreError);
  EXPECT_EQ(stores_.Configurations().Read().storeId, snapshot.storeId);
  EXPECT_EQ(stores_.Tests().GetTestProperties(3), Q("v"));
}

TEST_F(ConfigurationTest, WhatNoStoreCanHoldIsRefusedWhole) {
  Write(Sample());
  const struct {
    std::function<void(Configuration&)> spoil;
    const char* says;
  } rows[] = {
      {[](Configuration& c) { c.groups[1].id = 12; }, "used twice"},  // a server's
      {[](Configuration& c) { c.groups[0].id = -1; }, "-1 is no id"},
      {[](Configuration& c) { c.groups[0].servers[0].tests[1].id = 3; }, "Test \"echo\": the id 3 is used twice"},
      {[](Configuration& c) { c.root.alerts[0].id = 7; }, "used twice"},
      {[](Configuration& c) { c.testTypes[0].id = 5; }, "used twice"},
      {[](Configuration& c) { c.groups[0].servers[0].tests[0].idTestType = 1; }, "no test type 1"},
      {[](Configuration& c) { c.alertTypes.clear(); }, "no alert type 1"},
      {[](Configuration& c) { c.testTypes[1].module.clear(); }, "no module file name"},
      {[](Configuration& c) { c.testTypes[1].module = Q("../x.dll"); }, "no file name"},
      {[](Configuration& c) { c.testTypes[1].module = QString(300, u'm'); }, "too long"},
      {[](Configuration& c) { c.testTypes[1].module = Q("PING.dll"); }, "another type"},
      {[](Configuration& c) { c.root.name = Q("r"); }, "root group"},
      {[](Configuration& c) { c.root.schedule->startDate = QDate(-5, 1, 1); }, "start date"},
      {[](Configuration& c) {
         c.groups[0].id = 2147483647;
         c.root.servers.emplace_back();
       },
       "no id left"},
  };
  for (const auto& row : rows) {
    Configuration bad = Sample();
    bad.groups[0].name = Q("A2");
    row.spoil(bad);
    const QString error = ErrorOf([&] { Write(bad); });
    EXPECT_TRUE(error.contains(QString::fromLatin1(row.says))) << row.says << ": " << error.toStdString();
    EXPECT_EQ(Read(), Sample()) << row.says;
  }
}

}  // namespace
}  // namespace quarl::store
