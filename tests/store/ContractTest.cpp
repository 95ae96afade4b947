// What the store objects promise, over every engine.
#include <QDateTime>
#include <tuple>

#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

class StoreContract : public EngineTest {
 protected:
  Stores& W() { return writer_; }
  /// Reads what W() wrote.
  Stores& R() { return Reader(); }
};

INSTANTIATE_TEST_SUITE_P(Engines, StoreContract, ::testing::Values(Engine::Memory, Engine::File, Engine::TwoUsers),
                         &StoreContract::NameOf);

const QString kName = Q("name");

TEST_P(StoreContract, ANewStoreIsEmpty) {
  EXPECT_TRUE(R().Groups().GetGroups(0).Eof());
  EXPECT_TRUE(R().Servers().GetAllServers(0).Eof());
  EXPECT_TRUE(R().Servers().GetServersByGroup(0).Eof());
  EXPECT_TRUE(R().Alerts().GetAlertsByGroup(0).Eof());
  EXPECT_TRUE(R().System().GetTestTypes().Eof());
  EXPECT_TRUE(R().System().GetAlertTypes().Eof());
  EXPECT_TRUE(R().Log().GetLogs().Eof());
  EXPECT_FALSE(R().Groups().GetDefaultSchedule());
}

TEST_P(StoreContract, GroupsAreListedInByteOrderNewestFirstAmongEqualNames) {
  for (const char* name : {"b", "a", "B", "\xc3\xa4", "\xf0\x9f\x98\x80", "\xef\xbf\xbd", "a", ""}) {
    ASSERT_GT(W().Groups().AddGroup(QString::fromUtf8(name), Q("of ") + QString::fromUtf8(name)), 0);
  }
  // The astral character sorts after U+FFFD, as its UTF-8 does.
  EXPECT_EQ(Column(R().Groups().GetGroups(0), "IDGroup").toStdString(), "8 3 7 2 1 4 6 5");
  EXPECT_EQ(R().Groups().GetGroup(4), (GroupRecord{Q("ä"), Q("of ä")}));
}

// Adds a server and a test of type 1 in one change: the ids, joined by a blank.
std::string AddInChange(Stores& stores, bool commit) {
  const auto change = stores.BeginChange();
  const qint32 server = stores.Servers().AddServer(kName, kName, 0);
  EXPECT_EQ(stores.Servers().AddServer(kName, kName, 77), 0) << "a refusal lets the others go on";
  const qint32 test = stores.Tests().AddTest(server, 1, kName);
  EXPECT_EQ(Column(stores.Tests().GetTestsByServer(server), "IDTest"), QString::number(test)) << "seen before its end";
  if (commit) change->Commit();
  return std::to_string(server) + ' ' + std::to_string(test);
}

TEST_P(StoreContract, AChangeIsKeptWholeOrNotAtAll) {
  ASSERT_EQ(folder_.AddTestType(W(), kName), 1);
  const auto servers = [&] { return Column(R().Servers().GetAllServers(0), "IDServer").toStdString(); };
  AddInChange(W(), false);
  EXPECT_EQ(servers(), "");
  EXPECT_EQ(AddInChange(W(), true), "1 1") << "not even the ids of the lost one are used up";
  EXPECT_EQ(servers(), "1");
  EXPECT_EQ(Column(R().Tests().GetTestsByServer(1), "IDTest").toStdString(), "1");
  EXPECT_EQ(W().Servers().AddServer(kName, kName, 0), 2) << "writing goes on after it";
}

TEST_P(StoreContract, AChangeWithAFailedOperationIsNotKept) {
  ASSERT_EQ(folder_.AddTestType(W(), kName), 1);
  {
    const auto change = W().BeginChange();
    EXPECT_GT(W().Servers().AddServer(kName, kName, 0), 0);
    EXPECT_NE(ErrorOf([&] { std::ignore = W().BeginChange(); }), QString()) << "one at a time";
    EXPECT_NE(ErrorOf([&] { std::ignore = W().Servers().AddServer(kName, kName, 0); }), QString());
    EXPECT_NE(ErrorOf([&] { change->Commit(); }), QString());
  }
  EXPECT_TRUE(R().Servers().GetAllServers(0).Eof());
  EXPECT_EQ(W().Servers().AddServer(kName, kName, 0), 1);
}

TEST_P(StoreContract, TheRootGroupIsNoRecord) {
  EXPECT_FALSE(R().Groups().GetGroup(0));
  EXPECT_FALSE(W().Groups().UpdateGroup(0, kName, kName));
  EXPECT_FALSE(W().Groups().RemoveGroup(0));
  EXPECT_FALSE(W().Groups().SetGroupSchedule(0, {}));
  EXPECT_TRUE(R().Groups().GetGroups(0).Eof());
}

TEST_P(StoreContract, GroupsAndServersShareOneSequenceAndNoIdComesTwice) {
  EXPECT_EQ(W().Groups().AddGroup(kName, {}), 1);
  EXPECT_EQ(W().Servers().AddServer(kName, {}, 0), 2);
  EXPECT_EQ(W().Servers().AddServer(kName, {}, 1), 3);
  EXPECT_TRUE(W().Servers().RemoveServer(3));
  EXPECT_EQ(W().Servers().AddServer(kName, {}, 99), 0);  // a refusal takes no id
  EXPECT_EQ(W().Groups().AddGroup(kName, {}), 4);
}

TEST_P(StoreContract, ServersAreReadWrittenAndMoved) {
  const qint32 group = W().Groups().AddGroup(Q("Group"), {});
  const qint32 b = W().Servers().AddServer(Q("b"), Q("10.0.0.2"), 0);
  const qint32 a = W().Servers().AddServer(Q("a"), Q("10.0.0.1"), group);
  EXPECT_EQ(R().Servers().GetServer(a), (ServerRecord{Q("a"), Q("10.0.0.1"), group}));
  EXPECT_EQ(Column(R().Servers().GetAllServers(0), "ServerName"), Q("a b"));
  EXPECT_EQ(Column(R().Servers().GetAllServers(0), "GroupName"), Q("Group -"));
  EXPECT_EQ(Column(R().Servers().GetAllServers(0), "IDTestState"), Q("- -"));

  EXPECT_FALSE(W().Servers().UpdateServer(b, kName, {}, 4711));
  EXPECT_FALSE(W().Servers().UpdateServer(4711, kName, {}, 0));
  EXPECT_TRUE(W().Servers().UpdateServer(b, Q("b2"), Q("::1"), group));
  EXPECT_TRUE(R().Servers().GetServersByGroup(0).Eof());
  EXPECT_EQ(Column(R().Servers().GetServersByGroup(group), "ServerIP"), Q("10.0.0.1 ::1"));
  EXPECT_TRUE(W().Servers().RemoveServer(b));
  EXPECT_FALSE(W().Servers().RemoveServer(b));
  EXPECT_FALSE(R().Servers().GetServer(b));
}

TEST_P(StoreContract, SchedulesAndThresholdsAreKeptAsGiven) {
  const ScheduleRecord schedules[] = {
      {},
      {true, QDate(2024, 2, 29), QTime(23, 59, 59), 32767, 3},
      {false, QDate(1, 1, 1), QTime(0, 0, 0, 1), -32768, -1},
      {true, QDate(9999, 12, 31), QTime(), 0, 0},
  };
  const qint32 group = W().Groups().AddGroup(kName, {});
  const qint32 server = W().Servers().AddServer(kName, {}, group);
  EXPECT_FALSE(R().Groups().GetGroupSchedule(group));
  EXPECT_FALSE(R().Servers().GetServerSchedule(server));
  for (const ScheduleRecord& schedule : schedules) {
    EXPECT_TRUE(W().Groups().SetGroupSchedule(group, schedule));
    EXPECT_TRUE(W().Groups().SetDefaultSchedule(schedule));
    EXPECT_TRUE(W().Servers().SetServerSchedule(server, schedule));
    EXPECT_EQ(R().Groups().GetGroupSchedule(group), schedule);
    EXPECT_EQ(R().Groups().GetDefaultSchedule(), schedule);
    EXPECT_EQ(R().Servers().GetServerSchedule(server), schedule);
  }
  EXPECT_FALSE(W().Servers().SetServerSchedule(group, {}));
  EXPECT_FALSE(W().Groups().SetGroupSchedule(server, {}));
  EXPECT_FALSE(W().Groups().SetDefaultSchedule({true, QDate(10000, 1, 1), QTime(), 1, 1}));
  EXPECT_EQ(R().Groups().GetDefaultSchedule(), schedules[3]);

  EXPECT_EQ(R().Servers().GetFailThreshold(server), 3);
  for (const qint16 count : {qint16(1), qint16(-32768), qint16(32767), qint16(0)}) {
    EXPECT_TRUE(W().Servers().SetFailThreshold(server, count));
    EXPECT_EQ(R().Servers().GetFailThreshold(server), count);
  }
  EXPECT_FALSE(W().Servers().SetFailThreshold(4711, 1));
}

TEST_P(StoreContract, TestsTakeTheNameOfTheirTypeAndHaveNoResultYet) {
  const qint32 ping = folder_.AddTestType(W(), Q("Ping"));
  const qint32 http = folder_.AddTestType(W(), Q("Http"));
  const qint32 server = W().Servers().AddServer(kName, {}, 0);
  EXPECT_EQ(W().Tests().AddTest(server, http, {}), 1);
  EXPECT_EQ(W().Tests().AddTest(server, ping, Q("p")), 2);
  EXPECT_LT(W().Tests().AddTest(server + 1, ping, {}), 1);
  EXPECT_LT(W().Tests().AddTest(server, http + 1, {}), 1);
  EXPECT_TRUE(W().Tests().RenameTest(2, Q("Echo")));
  EXPECT_FALSE(W().Tests().RenameTest(3, Q("Echo")));

  const std::pair<const char*, const char*> columns[] = {{"IDTest", "1 2"},
                                                         {"TestName", "Http Echo"},
                                                         {"IDTestType", "2 1"},
                                                         {"TestType", "Http Ping"},
                                                         {"IDTestState", "2 2"},
                                                         {"LastExecution", "- -"},
                                                         {"TestState", "not run yet not run yet"},
                                                         {"LastResult", "- -"}};
  for (const auto& [field, values] : columns) {
    EXPECT_EQ(Column(R().Tests().GetTestsByServer(server), field).toStdString(), values) << field;
  }
  EXPECT_EQ(R().Tests().GetTestProperties(2), Q("p"));
  EXPECT_EQ(R().Tests().GetTestModule(2), Q("Ping.dll"));
  EXPECT_FALSE(R().Tests().GetTestModule(3));
  EXPECT_FALSE(R().Tests().GetTestProperties(3));
  EXPECT_TRUE(W().Tests().RemoveTest(1));
  EXPECT_FALSE(W().Tests().RemoveTest(1));
  EXPECT_EQ(Column(R().Tests().GetTestsByServer(server), "IDTest"), Q("2"));
}

TEST_P(StoreContract, AnAlertIsItsOwnersLastOneWhenItIsAddedOrMoved) {
  const qint32 type = folder_.AddAlertType(W(), Q("Mail"));
  const qint32 group = W().Groups().AddGroup(kName, {});
  const qint32 server = W().Servers().AddServer(kName, {}, group);
  for (int i = 0; i < 3; ++i) ASSERT_GT(W().Alerts().AddServerAlert(server, type, {}), 0);
  for (int i = 0; i < 2; ++i) ASSERT_GT(W().Alerts().AddGroupAlert(group, type, {}), 0);
  ASSERT_EQ(W().Alerts().AddGroupAlert(0, type, {}), 6);

  const struct {
    qint32 alert, toGroup, toServer;
    bool done;
    const char *ofServer, *ofGroup, *ofRoot;
  } moves[] = {
      {1, group, 0, true, "2 3", "4 5 1", "6"},       {4, 0, server, true, "2 3 4", "5 1", "6"},
      {2, 0, 0, true, "3 4", "5 1", "6 2"},           {3, 0, server, true, "4 3", "5 1", "6 2"},
      {3, group, server, false, "4 3", "5 1", "6 2"}, {3, 4711, 0, false, "4 3", "5 1", "6 2"},
      {3, 0, group, false, "4 3", "5 1", "6 2"},      {99, group, 0, false, "4 3", "5 1", "6 2"},
  };
  for (const auto& move : moves) {
    EXPECT_EQ(W().Alerts().MoveAlert(move.alert, move.toGroup, move.toServer), move.done);
    EXPECT_EQ(Column(R().Alerts().GetAlertsByServer(server), "IDAlert").toStdString(), move.ofServer);
    EXPECT_EQ(Column(R().Alerts().GetAlertsByGroup(group), "IDAlert").toStdString(), move.ofGroup);
    EXPECT_EQ(Column(R().Alerts().GetAlertsByGroup(0), "IDAlert").toStdString(), move.ofRoot);
  }
}

TEST_P(StoreContract, AlertsAreReadAndWritten) {
  const qint32 type = folder_.AddAlertType(W(), Q("Mail"));
  const qint32 alert = W().Alerts().AddGroupAlert(0, type, Q("p"));
  EXPECT_LT(W().Alerts().AddGroupAlert(0, type + 1, {}), 1);
  EXPECT_LT(W().Alerts().AddGroupAlert(4711, type, {}), 1);
  EXPECT_LT(W().Alerts().AddServerAlert(0, type, {}), 1);
  EXPECT_TRUE(W().Alerts().RenameAlert(alert, kName));
  EXPECT_EQ(R().Alerts().GetAlertProperties(alert), Q("p"));
  EXPECT_TRUE(W().Alerts().SetAlertProperties(alert, Q("q")));
  EXPECT_EQ(R().Alerts().GetAlertProperties(alert), Q("q"));
  EXPECT_EQ(R().Alerts().GetAlertModule(alert), Q("Mail.dll"));
  EXPECT_EQ(Column(R().Alerts().GetAlertsByGroup(0), "AlertName"), kName);
  EXPECT_EQ(Column(R().Alerts().GetAlertsByGroup(0), "AlertType"), Q("Mail"));
  EXPECT_TRUE(W().Alerts().RemoveAlert(alert));
  EXPECT_FALSE(W().Alerts().RemoveAlert(alert) || W().Alerts().RenameAlert(alert, kName) ||
               W().Alerts().SetAlertProperties(alert, {}));
  EXPECT_FALSE(R().Alerts().GetAlertProperties(alert));
}

TEST_P(StoreContract, RemovingAGroupRemovesAllBelowIt) {
  const qint32 testType = folder_.AddTestType(W(), Q("Ping"));
  const qint32 alertType = folder_.AddAlertType(W(), Q("Mail"));
  const qint32 group = W().Groups().AddGroup(kName, {});
  const qint32 server = W().Servers().AddServer(kName, {}, group);
  const qint32 other = W().Servers().AddServer(kName, {}, 0);
  ASSERT_TRUE(W().Groups().SetGroupSchedule(group, {}) && W().Servers().SetServerSchedule(server, {}));
  for (const qint32 id : {server, other}) {
    ASSERT_GT(W().Tests().AddTest(id, testType, {}), 0);
    ASSERT_GT(W().Alerts().AddServerAlert(id, alertType, {}), 0);
  }
  ASSERT_GT(W().Alerts().AddGroupAlert(group, alertType, {}), 0);
  EXPECT_FALSE(W().System().RemoveTestType(testType) || W().System().RemoveAlertType(alertType));

  EXPECT_TRUE(W().Groups().RemoveGroup(group));
  EXPECT_EQ(Column(R().Servers().GetAllServers(0), "IDServer"), QString::number(other));
  EXPECT_FALSE(R().Groups().GetGroupSchedule(group) || R().Servers().GetServerSchedule(server));
  const TreeRows tree = R().Tree().ReadTree();
  EXPECT_EQ(tree.tests.size(), 1U);
  EXPECT_EQ(tree.serverAlerts.size(), 1U);
  EXPECT_EQ(tree.groupAlerts.size(), 0U);

  EXPECT_TRUE(W().Servers().RemoveServer(other));
  EXPECT_TRUE(W().System().RemoveTestType(testType) && W().System().RemoveAlertType(alertType));
  EXPECT_FALSE(W().System().RemoveTestType(testType) || W().System().RemoveAlertType(alertType));
}

TEST_P(StoreContract, ATreeReadAheadIsGivenOnceAndOnlyWhileNothingHasChanged) {
  SqlStores& reader = Reader();
  const auto statements = [&] {
    const quint64 before = reader.Statistics().statementsExecuted;
    EXPECT_EQ(reader.Tree().ReadTree().groups.size(),
              static_cast<std::size_t>(reader.Groups().GetGroups(0).RowCount()));
    return reader.Statistics().statementsExecuted - before - 1;
  };
  ASSERT_GT(W().Groups().AddGroup(kName, {}), 0);
  reader.ReadAhead();
  EXPECT_EQ(statements(), 0U);
  EXPECT_EQ(statements(), 5U);
  reader.ReadAhead();
  ASSERT_GT(W().Groups().AddGroup(kName, {}), 0);
  EXPECT_EQ(statements(), 5U);
}

TEST_P(StoreContract, AnyTextComesBackAsItWasGiven) {
  const QString texts[] = {
      QString(),
      Q("it's \"quoted\"; DROP TABLE groups; -- %1 $1 ?1"),
      Q("line\nline\r\n\ttab"),
      Q("\u05e9\u05dc\u05d5\u05dd \u202eabc\u202c \U0001F600"),
      QString(10000, QChar(0x20ac)),
      Q("nul") + QChar(0) + Q("behind") + QChar(0),
  };
  const qint32 type = folder_.AddTestType(W(), Q("Ping"));
  const qint32 group = W().Groups().AddGroup({}, {});
  const qint32 server = W().Servers().AddServer({}, {}, 0);
  const qint32 test = W().Tests().AddTest(server, type, {});
  for (const QString& text : texts) {
    EXPECT_TRUE(W().Groups().UpdateGroup(group, text, text) && W().Servers().UpdateServer(server, text, text, 0) &&
                W().Tests().RenameTest(test, text) && W().Tests().SetTestProperties(test, text) &&
                W().Log().AddLog(1, text));
    EXPECT_EQ(R().Groups().GetGroup(group), (GroupRecord{text, text}));
    EXPECT_EQ(R().Servers().GetServer(server), (ServerRecord{text, text, 0}));
    EXPECT_EQ(R().Tests().GetTestsByServer(server).Value("TestName").toString(), text);
    EXPECT_EQ(R().Tests().GetTestProperties(test), text);
    EXPECT_EQ(R().Tree().ReadTree().texts, (text + text + text).toUtf8().toStdString());
  }
  RecordSet log = R().Log().GetLogs();
  for (const QString& text : texts) {
    EXPECT_EQ(log.Value("LogDescription").toString(), text);
    log.MoveNext();
  }
  const qint32 half = W().Groups().AddGroup(QString(QChar(0xd800)), {});
  EXPECT_EQ(R().Groups().GetGroup(half)->name, Q("?"));  // half a character is no text
}

TEST_P(StoreContract, TheLogKeepsOrderTimeAndSeverity) {
  folder_.clock.now = 2000;
  EXPECT_TRUE(W().Log().AddLog(3, Q("late")));
  folder_.clock.now = 1000;  // clocks are set back, the order stays
  EXPECT_TRUE(W().Log().AddLog(1, Q("early")));
  EXPECT_FALSE(W().Log().AddLog(0, kName) || W().Log().AddLog(4, kName) || W().Log().AddLog(-1, kName));
  RecordSet log = R().Log().GetLogs();
  EXPECT_EQ(Column(log, "LogDescription"), Q("late early"));
  EXPECT_EQ(Column(log, "IDSeverity"), Q("3 1"));
  EXPECT_EQ(log.Value("LogDate").toDateTime(), QDateTime::fromMSecsSinceEpoch(2000));
  EXPECT_TRUE(W().Log().ClearLogs());
  EXPECT_TRUE(R().Log().GetLogs().Eof());
}

TEST_P(StoreContract, WithoutAServiceNothingIsDone) {
  const qint32 server = W().Servers().AddServer(kName, {}, 0);
  EXPECT_EQ(R().System().GetServiceState(), -1);
  EXPECT_FALSE(W().System().StartService() || W().System().StopService());
  EXPECT_FALSE(W().Groups().CheckGroup(0) || W().Servers().CheckServer(server) || W().Tests().CheckTest(1));
  EXPECT_EQ(R().Install().GetInstallPath(), folder_.Path(Q("app")));
}

TEST_P(StoreContract, TheTreeIsWhatTheFiveQueriesGive) {
  const qint32 testType = folder_.AddTestType(W(), Q("Ping"));
  const qint32 alertType = folder_.AddAlertType(W(), Q("Mail"));
  std::vector<qint32> groups{0};
  for (const char* name : {"b", "a", "a"}) groups.push_back(W().Groups().AddGroup(QString::fromLatin1(name), {}));
  for (const char* name : {"y", "x", "x"}) {
    for (const qint32 group : groups) {
      const qint32 server = W().Servers().AddServer(QString::fromLatin1(name), {}, group);
      for (int i = 0; i < 2; ++i) ASSERT_GT(W().Tests().AddTest(server, testType, {}), 0);
      const qint32 alert = W().Alerts().AddServerAlert(server, alertType, {});
      ASSERT_GT(W().Alerts().AddServerAlert(server, alertType, {}), 0);
      ASSERT_TRUE(W().Alerts().MoveAlert(alert, 0, server));
      ASSERT_GT(W().Alerts().AddGroupAlert(group, alertType, {}), 0);
    }
  }
  const TreeRows tree = R().Tree().ReadTree();
  ASSERT_FALSE(tree.failure);
  // Rows of an owner, in the order of the owner's own query.
  const auto idsOf = [](const std::vector<TreeRow>& rows, qint32 owner) {
    QStringList ids;
    for (const TreeRow& row : rows) {
      if (row.owner == owner) ids.append(QString::number(row.id));
    }
    return ids.join(u' ');
  };
  EXPECT_EQ(idsOf(tree.groups, 0), Column(R().Groups().GetGroups(0), "IDGroup"));
  for (const qint32 group : groups) {
    EXPECT_EQ(idsOf(tree.servers, group), Column(R().Servers().GetServersByGroup(group), "IDServer"));
    EXPECT_EQ(idsOf(tree.groupAlerts, group), Column(R().Alerts().GetAlertsByGroup(group), "IDAlert"));
  }
  for (const TreeRow& server : tree.servers) {
    EXPECT_EQ(idsOf(tree.tests, server.id), Column(R().Tests().GetTestsByServer(server.id), "IDTest"));
    EXPECT_EQ(idsOf(tree.serverAlerts, server.id), Column(R().Alerts().GetAlertsByServer(server.id), "IDAlert"));
  }
  for (const auto* rows : {&tree.servers, &tree.tests, &tree.serverAlerts, &tree.groupAlerts}) {
    EXPECT_TRUE(std::is_sorted(rows->begin(), rows->end(),
                               [](const TreeRow& a, const TreeRow& b) { return a.owner < b.owner; }));
  }
  const TreeRow& test = tree.tests.front();
  EXPECT_EQ(test.type, testType);
  EXPECT_EQ(tree.texts.substr(test.textOffset, test.textLength), "Ping");
}

}  // namespace
}  // namespace quarl::store
