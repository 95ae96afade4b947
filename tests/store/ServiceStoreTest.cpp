// What the store promises to the monitoring service, over every engine.
#include "store/StoreFixture.h"

namespace quarl::store {
namespace {

ServiceInstance InstanceOf(const QString& id, qint64 beatMs) {
  return {.id = id, .process = ProcessIdentity::Current(), .startedMs = beatMs, .beatMs = beatMs, .state = 4};
}

class ServiceStoreContract : public EngineTest {
 protected:
  ServiceStoreContract() {
    type_ = folder_.AddTestType(writer_, Q("Ping"));
    alertType_ = folder_.AddAlertType(writer_, Q("Mail"));
    group_ = writer_.Groups().AddGroup(Q("g"), {});
    server_ = writer_.Servers().AddServer(Q("s"), Q("10.0.0.1"), group_);
    test_ = writer_.Tests().AddTest(server_, type_, Q("p"));
    alert_ = writer_.Alerts().AddServerAlert(server_, alertType_, Q("to=x"));
    EXPECT_FALSE(S().Claim(InstanceOf(kMe, folder_.clock.now), 0));
  }
  /// The service's side and the console's.
  ServiceStore& S() { return writer_.Service(); }
  SqlStores& C() { return Reader(); }

  TestResult Failed(const QString& text, int failures = 1) const {
    return {.idTest = test_,
            .state = TestState::Failed,
            .lastExecutionMs = folder_.clock.now,
            .text = text,
            .performance = Q("time=1s"),
            .consecutiveFailures = failures,
            .failed = failures >= 3,
            .sinceMs = 5};
  }
  OutgoingMessage MessageTo(qint32 idAlert, const QString& subject, qint64 notBefore = 0) const {
    return {.idAlert = idAlert,
            .alertName = Q("Mail"),
            .idServer = server_,
            .serverName = Q("s"),
            .address = Q("10.0.0.1"),
            .thread = Q("t"),
            .subject = subject,
            .text = Q("text"),
            .createdMs = folder_.clock.now,
            .notBeforeMs = notBefore};
  }
  bool Put(std::vector<OutgoingMessage> messages) {
    ResultBatch batch;
    batch.messages = std::move(messages);
    return S().Record(kMe, batch);
  }
  QString Claimed(qint64 nowMs) {
    QStringList subjects;
    for (const ClaimedMessage& message : S().ClaimMessages(kMe, nowMs, 10)) {
      subjects.append(message.message.subject);
      last_ = message;
    }
    return subjects.join(u' ');
  }
  LogEntry Entry(const QString& text) const { return {folder_.clock.now, Severity::Information, text}; }

  const QString kMe = Q("me");
  qint32 type_ = 0, alertType_ = 0, group_ = 0, server_ = 0, test_ = 0, alert_ = 0;
  ClaimedMessage last_;
};

INSTANTIATE_TEST_SUITE_P(Engines, ServiceStoreContract,
                         ::testing::Values(Engine::Memory, Engine::File, Engine::TwoUsers),
                         &ServiceStoreContract::NameOf);

TEST_P(ServiceStoreContract, ThePlanHoldsEverythingThatRuns) {
  const ScheduleRecord schedule{true, QDate(2024, 2, 29), QTime(6, 30), 5, 1};
  ASSERT_TRUE(C().Groups().SetDefaultSchedule(schedule));
  ASSERT_TRUE(C().Servers().SetServerSchedule(server_, {}));
  const qint32 other = C().Servers().AddServer(Q("o"), {}, 0);
  const qint32 rootAlert = C().Alerts().AddGroupAlert(0, alertType_, {});
  for (const auto& [stored, used] : {std::pair<int, int>{0, 1}, {-5, 1}, {1, 1}, {10, 10}, {11, 10}, {32767, 10}}) {
    ASSERT_TRUE(C().Servers().SetFailThreshold(other, static_cast<qint16>(stored)));
    EXPECT_EQ(S().ReadPlan().servers[1].failThreshold, used) << stored;
  }
  const Plan plan = S().ReadPlan();
  ASSERT_EQ(plan.groups.size(), 2U);
  EXPECT_EQ(plan.groups[0].schedule, schedule);
  EXPECT_FALSE(plan.groups[1].schedule);
  ASSERT_EQ(plan.servers.size(), 2U);
  EXPECT_EQ(plan.servers[0].failThreshold, 3);
  EXPECT_EQ(plan.servers[0].schedule, ScheduleRecord());
  EXPECT_EQ(plan.servers[0].address, Q("10.0.0.1"));
  EXPECT_EQ(plan.servers[1].idGroup, 0);
  ASSERT_EQ(plan.tests.size(), 1U);
  EXPECT_EQ(plan.tests[0].module, Q("Ping.dll"));
  EXPECT_EQ(plan.tests[0].properties, Q("p"));
  ASSERT_EQ(plan.alerts.size(), 2U);
  EXPECT_EQ(plan.alerts[0].idServer, server_);
  EXPECT_EQ(plan.alerts[1].id, rootAlert);
  EXPECT_EQ(plan.alerts[1].idServer, 0);
  EXPECT_EQ(plan.alerts[1].idGroup, 0);
}

TEST_P(ServiceStoreContract, NewsTellOfChangesToTheConfigurationOnly) {
  const qint64 before = S().News().revision;
  ASSERT_TRUE(C().Log().AddLog(1, Q("x")));
  ResultBatch batch;
  batch.tests = {Failed(Q("x"))};
  ASSERT_TRUE(S().Record(kMe, batch));
  EXPECT_EQ(S().News().revision, before);
  ASSERT_TRUE(C().Tests().SetTestProperties(test_, Q("q")));
  EXPECT_GT(S().News().revision, before);
  EXPECT_EQ(S().News().revision, S().ReadPlan().revision);
  EXPECT_EQ(S().News().storeId, S().ReadPlan().storeId);
  const quint64 statements = writer_.Statistics().statementsExecuted;
  std::ignore = S().News();
  EXPECT_EQ(writer_.Statistics().statementsExecuted, statements);
}

TEST_P(ServiceStoreContract, ResultsAreShownAndComeBackAfterARestart) {
  ResultBatch batch;
  batch.tests = {Failed(Q("no answer"), 3)};
  batch.servers = {{server_, TestState::Failed, true, 7}};
  batch.log = {{folder_.clock.now, Severity::Error, Q("down")}};
  ASSERT_TRUE(S().Record(kMe, batch));
  EXPECT_EQ(Column(C().Tests().GetTestsByServer(server_), "IDTestState"), Q("3"));
  EXPECT_EQ(Column(C().Tests().GetTestsByServer(server_), "TestState"), Q("failed"));
  EXPECT_EQ(Column(C().Tests().GetTestsByServer(server_), "LastResult"), Q("no answer"));
  EXPECT_EQ(Column(C().Servers().GetServersByGroup(group_), "IDTestState"), Q("3"));
  EXPECT_EQ(Column(C().Log().GetLogs(), "IDSeverity"), Q("3"));
  const StoredStates states = C().Service().ReadStates();
  EXPECT_EQ(states.tests, batch.tests);
  EXPECT_EQ(states.servers, batch.servers);

  ASSERT_TRUE(C().Tests().RemoveTest(test_));
  batch.servers.clear();
  batch.statelessServers = {server_};
  ASSERT_TRUE(S().Record(kMe, batch));  // of a test that is no more
  EXPECT_TRUE(C().Service().ReadStates().tests.empty());
  EXPECT_EQ(Column(C().Servers().GetServersByGroup(group_), "IDTestState"), Q("-"));
}

TEST_P(ServiceStoreContract, ABatchIsWrittenWholeOrNotAtAll) {
  ResultBatch batch;
  batch.tests = {Failed(Q("x"))};
  batch.log = {{0, static_cast<Severity>(9), Q("no such severity")}};
  EXPECT_THROW(std::ignore = S().Record(kMe, batch), StoreError);
  EXPECT_TRUE(C().Service().ReadStates().tests.empty());
}

TEST_P(ServiceStoreContract, TheLogKeepsItsNewestRecords) {
  EXPECT_EQ(S().LogRetention(), kDefaultLogRetention);
  EXPECT_FALSE(C().Service().SetLogRetention(0));
  ASSERT_TRUE(C().Service().SetLogRetention(3));
  for (int i = 0; i < 5; ++i) {
    ResultBatch batch;
    batch.log = {Entry(QString::number(i)), Entry(Q("%1b").arg(i))};
    ASSERT_TRUE(S().Record(kMe, batch));
  }
  EXPECT_EQ(Column(C().Log().GetLogs(), "LogDescription"), Q("3b 4 4b"));
  ASSERT_TRUE(C().Log().ClearLogs());
  ResultBatch batch;
  batch.log = {Entry(Q("new"))};
  ASSERT_TRUE(S().Record(kMe, batch));
  EXPECT_EQ(Column(C().Log().GetLogs(), "LogDescription"), Q("new"));
}

TEST_P(ServiceStoreContract, AMessageIsClaimedOnceAndTriedAgainUntilItIsOut) {
  ASSERT_TRUE(Put({MessageTo(alert_, Q("m1")), MessageTo(alert_, Q("m2"))}));
  EXPECT_EQ(S().NextMessageMs(), 0);
  EXPECT_EQ(Claimed(100), Q("m1"));  // m2 is of the same thread and waits
  EXPECT_EQ(last_.module, Q("Mail.dll"));
  EXPECT_EQ(last_.properties, Q("to=x"));
  EXPECT_EQ(last_.attempts, 1);
  EXPECT_EQ(Claimed(100), QString());
  EXPECT_FALSE(S().NextMessageMs());
  ASSERT_TRUE(S().PutBackMessage(kMe, last_.id, 500, Entry(Q("later"))));
  EXPECT_FALSE(S().PutBackMessage(kMe, last_.id, 600, {}));
  EXPECT_EQ(S().NextMessageMs(), 500);
  EXPECT_EQ(Claimed(499), QString());
  ASSERT_TRUE(C().Alerts().SetAlertProperties(alert_, Q("to=y")));
  EXPECT_EQ(Claimed(500), Q("m1"));
  EXPECT_EQ(last_.properties, Q("to=y"));
  EXPECT_EQ(last_.attempts, 2);
  ASSERT_TRUE(S().FinishMessage(kMe, last_.id, Entry(Q("delivered"))));
  EXPECT_FALSE(S().FinishMessage(kMe, last_.id, Entry(Q("again"))));
  EXPECT_EQ(Column(C().Log().GetLogs(), "LogDescription"), Q("later delivered"));
  ASSERT_TRUE(C().Alerts().RemoveAlert(alert_));
  EXPECT_EQ(Claimed(500), Q("m2"));
  EXPECT_FALSE(last_.module);
}

TEST_P(ServiceStoreContract, MessagesToDifferentAlertsDoNotWaitForEachOther) {
  const qint32 second = C().Alerts().AddServerAlert(server_, alertType_, {});
  ASSERT_TRUE(Put({MessageTo(alert_, Q("m1"), 900), MessageTo(second, Q("m2")), MessageTo(alert_, Q("m3"))}));
  EXPECT_EQ(Claimed(100), Q("m2"));
  EXPECT_EQ(S().NextMessageMs(), 900);
}

TEST_P(ServiceStoreContract, OneServiceAStore) {
  const qint64 now = folder_.clock.now;
  ServiceInstance gone = InstanceOf(Q("gone"), now);
  gone.process.pid = 1;  // not with this start
  ServiceInstance rebooted = InstanceOf(Q("rebooted"), now);
  rebooted.process.boot = Q("an earlier one");
  ServiceInstance elsewhere = InstanceOf(Q("elsewhere"), now);
  elsewhere.process.boot = elsewhere.process.machine = Q("another");
  const struct {
    const char* what;
    ServiceInstance first;
    qint64 later;
    bool refused;
  } cases[] = {
      {"a living one", InstanceOf(Q("first"), now), 0, true},
      {"a living one without fresh signs", InstanceOf(Q("first"), now), kBeatFreshMs + 1, false},
      {"a sign from the future", InstanceOf(Q("first"), now), -kBeatFreshMs - 1, false},
      {"its process is gone", gone, 0, false},
      {"the machine was started again", rebooted, 0, rebooted.process.machine.isEmpty()},
      {"another machine", elsewhere, kBeatFreshMs, true},
      {"another machine without fresh signs", elsewhere, kBeatFreshMs + 1, false},
  };
  for (const auto& [what, first, later, refused] : cases) {
    S().Release(kMe);
    S().Release(Q("second"));
    ASSERT_FALSE(S().Claim(first, 0)) << what;
    const auto other = C().Service().Claim(InstanceOf(Q("second"), now + later), 0);
    EXPECT_EQ(other.has_value(), refused) << what;
    if (other) {
      EXPECT_EQ(other->process, first.process) << what;
    }
    EXPECT_EQ(S().Beat(first.id, now, 4), refused) << what;
    EXPECT_EQ(S().Record(first.id, {}), refused) << what;
    S().Release(first.id);
    EXPECT_EQ(S().Instance().has_value(), !refused) << what;
  }
}

TEST_P(ServiceStoreContract, WhatTheOneBeforeHadClaimedIsSentAgainLater) {
  ASSERT_TRUE(Put({MessageTo(alert_, Q("m"))}));
  EXPECT_EQ(Claimed(100), Q("m"));
  EXPECT_FALSE(S().Claim(InstanceOf(kMe, folder_.clock.now), 700));
  EXPECT_EQ(S().NextMessageMs(), 700);
  EXPECT_EQ(Claimed(700), Q("m"));
  EXPECT_EQ(last_.attempts, 2);
}

TEST_P(ServiceStoreContract, AChangeOfTheWholeContentLeavesNothingOfTheServiceBefore) {
  if (GetParam() == Engine::Memory) return;  // nothing can replace it
  ASSERT_TRUE(Put({MessageTo(alert_, Q("m"))}));
  const QString backup = folder_.Path(Q("backup.db"));
  C().Backup(backup);
  ASSERT_EQ(ErrorOf([&] { SqlStores::Restore(folder_.Setup(), backup); }), QString());
  EXPECT_FALSE(S().Beat(kMe, folder_.clock.now, 4));
  EXPECT_FALSE(S().NextMessageMs());
  EXPECT_FALSE(S().Instance());
}

/// The console's wish and a service that answers it, or does not, within the console's pauses.
class CheckRequestsTest : public ServiceStoreContract {
 protected:
  using Answer = std::function<void(const std::vector<CheckRequest>&)>;
  /// A console whose waiting lets time pass and the service work.
  SqlStores Console(Answer answer) {
    SqlSetup setup = folder_.Setup();
    setup.pause = [this, answer = std::move(answer)](int ms) {
      folder_.clock.now += ms;
      ++pauses_;
      answer(S().News().requests);
    };
    return SqlStores(setup);
  }
  void Finish(const std::vector<CheckRequest>& requests) {
    ResultBatch batch;
    batch.tests = {Failed(Q("done"))};
    for (const CheckRequest& request : requests) batch.answered.push_back(request.id);
    EXPECT_TRUE(S().Record(kMe, batch));
  }
  int pauses_ = 0;
};
INSTANTIATE_TEST_SUITE_P(Engines, CheckRequestsTest, ::testing::Values(Engine::File), &CheckRequestsTest::NameOf);

TEST_P(CheckRequestsTest, TheCallReturnsWhenTheResultsAreIn) {
  std::vector<CheckRequest> seen;
  SqlStores console = Console([&](const std::vector<CheckRequest>& requests) {
    if (pauses_ % 3 != 0) return;  // it takes its time
    seen.insert(seen.end(), requests.begin(), requests.end());
    Finish(requests);
  });
  EXPECT_TRUE(console.Tests().CheckTest(test_));
  EXPECT_EQ(Column(console.Tests().GetTestsByServer(server_), "LastResult"), Q("done"));
  EXPECT_TRUE(console.Servers().CheckServer(server_));
  EXPECT_TRUE(console.Groups().CheckGroup(group_));
  EXPECT_TRUE(console.Groups().CheckGroup(0));
  ASSERT_EQ(seen.size(), 4U);
  EXPECT_EQ(seen[0].idTest, test_);
  EXPECT_EQ(seen[1].idServer, server_);
  EXPECT_EQ(seen[2].idGroup, group_);
  EXPECT_EQ(seen[3].idGroup, 0);
  EXPECT_FALSE(seen[3].idServer || seen[3].idTest);
  EXPECT_FALSE(console.Tests().CheckTest(4711));
  EXPECT_EQ(AskSql(folder_.StorePath(), "SELECT count(*) FROM check_requests"), Q("0"));
}

TEST_P(CheckRequestsTest, WithoutARunningServiceTheAnswerIsThereAtOnce) {
  const qint64 now = folder_.clock.now;
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"no sign for long", [&] { EXPECT_TRUE(S().Beat(kMe, now - kBeatFreshMs - 1, 4)); }},
      {"not ready yet", [&] { EXPECT_TRUE(S().Beat(kMe, now, 2)); }},
      {"ending", [&] { EXPECT_TRUE(S().Beat(kMe, now, 3)); }},
      {"none", [&] { S().Release(kMe); }},
  };
  SqlStores console = Console([](const auto&) {});
  for (const auto& [what, make] : cases) {
    make();
    EXPECT_FALSE(console.Tests().CheckTest(test_)) << what;
    EXPECT_FALSE(console.Groups().CheckGroup(0)) << what;
    EXPECT_EQ(pauses_, 0) << what;
  }
}

TEST_P(CheckRequestsTest, TheWaitIsBoundedAndEndsWithTheServiceOrTheTest) {
  const qint64 before = folder_.clock.now;
  SqlStores silent = Console([&](const auto&) { EXPECT_TRUE(S().Beat(kMe, folder_.clock.now, 4)); });
  EXPECT_FALSE(silent.Tests().CheckTest(test_));
  EXPECT_EQ(folder_.clock.now - before, 10'000);
  EXPECT_TRUE(S().News().requests.empty());

  SqlStores ending = Console([&](const auto&) { S().Release(kMe); });
  pauses_ = 0;
  EXPECT_FALSE(ending.Tests().CheckTest(test_));
  EXPECT_EQ(pauses_, 1);

  EXPECT_FALSE(S().Claim(InstanceOf(kMe, folder_.clock.now), 0));
  SqlStores removed = Console([&](const auto&) { EXPECT_TRUE(writer_.Tests().RemoveTest(test_) || pauses_ > 2); });
  pauses_ = 0;
  EXPECT_FALSE(removed.Tests().CheckTest(test_));
  EXPECT_EQ(pauses_, 1);
}

}  // namespace
}  // namespace quarl::store
