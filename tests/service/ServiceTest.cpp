// The service as a whole over a store file, another user of which is at work meanwhile.
#include <QFile>
#include <algorithm>

#include "service/ServiceRig.h"

namespace quarl::service {
namespace {

using store::TestState;

class ServiceTest : public ::testing::Test {
 protected:
  ServiceTest() : service_(rig_.MakeService(rig_.stores.Service())) {}
  void Start() { ASSERT_FALSE(service_->Start()); }
  void Run(qint64 ms, qint64 stepMs = 1000) { rig_.Run(*service_, ms, stepMs); }
  QString States() { return store::Column(rig_.console.Tests().GetTestsByServer(rig_.server), "IDTestState"); }
  int Starts(qint32 test) {
    return static_cast<int>(std::count_if(rig_.runner.started.begin(), rig_.runner.started.end(),
                                          [test](const CheckJob& job) { return job.idTest == test; }));
  }
  /// The console's store whose waiting lets the service work.
  std::unique_ptr<store::SqlStores> WaitingConsole() {
    store::SqlSetup setup = rig_.folder.Setup();
    setup.clock = &rig_.clock;
    setup.pause = [this](int ms) { Run(ms, ms); };
    return std::make_unique<store::SqlStores>(setup);
  }
  qint16 State() {
    const auto instance = rig_.console.Service().Instance();
    return instance ? instance->state : 1;
  }

  ServiceRig rig_;
  std::unique_ptr<Service> service_;
};

TEST_F(ServiceTest, TestsRunBySchedulesAndTheirChangesAreTold) {
  Start();
  Run(61'000);
  EXPECT_EQ(Starts(rig_.echo), 1);
  EXPECT_EQ(Starts(rig_.page), 1);
  EXPECT_EQ(rig_.runner.started[0].module, QStringLiteral("Ping.dll"));
  EXPECT_EQ(rig_.runner.started[0].serverAddress, QStringLiteral("10.0.0.1"));
  EXPECT_EQ(States(), QStringLiteral("1 1"));
  rig_.runner.outcomes[rig_.echo] = Outcome(TestState::Failed, QStringLiteral("no answer"));
  Run(180'000);
  EXPECT_EQ(States(), QStringLiteral("3 1"));
  EXPECT_EQ(rig_.sender.TakeSubjects(), QStringLiteral("PROBLEM north: Echo failed|PROBLEM north: Echo failed"));

  service_.reset();  // a start later nothing is told anew
  service_ = rig_.MakeService(rig_.stores.Service());
  rig_.clock.Pass(store::kBeatFreshMs + 1);
  Start();
  Run(120'000);
  EXPECT_EQ(rig_.sender.TakeSubjects(), QString());
  rig_.runner.outcomes.clear();
  Run(60'000);
  EXPECT_EQ(rig_.sender.TakeSubjects(), QStringLiteral("RECOVERY north: Echo passed|RECOVERY north: Echo passed"));
  EXPECT_EQ(rig_.problems, QStringList());
}

TEST_F(ServiceTest, AChangedConfigurationIsFollowedWithoutAStop) {
  Start();
  Run(2'000);
  const qint32 added = rig_.console.Tests().AddTest(rig_.server, rig_.testType, QStringLiteral("new"));
  ASSERT_TRUE(rig_.console.Tests().SetTestProperties(rig_.echo, QStringLiteral("other")));
  ASSERT_TRUE(rig_.console.Tests().RemoveTest(rig_.page));
  Run(62'000);
  EXPECT_EQ(Starts(added), 1);
  EXPECT_EQ(Starts(rig_.page), 0);
  EXPECT_EQ(rig_.runner.started.back().properties.isEmpty(), false);
  for (const CheckJob& job : rig_.runner.started) {
    EXPECT_EQ(job.properties, job.idTest == added ? QStringLiteral("new") : QStringLiteral("other"));
  }
  ASSERT_TRUE(rig_.console.Groups().SetDefaultSchedule({true, {}, {}, 0, 0}));
  Run(70'000);
  const std::size_t started = rig_.runner.started.size();
  EXPECT_EQ(service_->Figures().scheduled, 0U);
  ASSERT_EQ(rig_.problems.size(), 1) << "one warning, not one a poll";
  EXPECT_TRUE(rig_.Log().contains(rig_.problems[0]));
  Run(70'000);
  EXPECT_EQ(rig_.runner.started.size(), started);
}

TEST_F(ServiceTest, ChecksOnDemandReturnWithTheirResults) {
  ASSERT_TRUE(rig_.console.Groups().SetDefaultSchedule({}));
  Start();
  Run(1'000);
  const auto console = WaitingConsole();
  rig_.runner.outcomes[rig_.page] = Outcome(TestState::Failed, QStringLiteral("404"));
  EXPECT_TRUE(console->Tests().CheckTest(rig_.echo));
  EXPECT_EQ(States(), QStringLiteral("1 2"));
  EXPECT_TRUE(console->Servers().CheckServer(rig_.server));
  EXPECT_EQ(States(), QStringLiteral("1 3"));
  rig_.runner.outcomes.clear();
  EXPECT_TRUE(console->Groups().CheckGroup(rig_.group));
  EXPECT_EQ(States(), QStringLiteral("1 1"));
  EXPECT_TRUE(console->Groups().CheckGroup(0));
  EXPECT_EQ(rig_.runner.started.size(), 7U);
  // A test that was added a moment ago, and a server that has none.
  const qint32 added = console->Tests().AddTest(rig_.server, rig_.testType, {});
  EXPECT_TRUE(console->Tests().CheckTest(added));
  EXPECT_TRUE(console->Servers().CheckServer(console->Servers().AddServer(QStringLiteral("bare"), {}, 0)));
  EXPECT_EQ(rig_.runner.started.size(), 8U);
}

TEST_F(ServiceTest, ACheckThatHangsDoesNotHoldTheConsoleForLong) {
  Start();
  Run(1'000);
  rig_.runner.room = 0;
  const auto console = WaitingConsole();
  const qint64 before = rig_.clock.now;
  EXPECT_FALSE(console->Tests().CheckTest(rig_.echo));
  EXPECT_EQ(rig_.clock.now - before, 10'000);
}

TEST_F(ServiceTest, OneServiceAStoreAndOthersSeeIt) {
  Start();
  EXPECT_EQ(State(), 4);
  const auto second = rig_.MakeService(rig_.console.Service());
  const auto other = second->Start();
  ASSERT_TRUE(other);
  EXPECT_EQ(other->process, ProcessIdentity::Current());
  // Without a sign of life the other one takes over, and the first one, awake again, ends.
  rig_.clock.Pass(store::kBeatFreshMs + 1);
  EXPECT_FALSE(second->Start());
  std::ignore = service_->Step();
  EXPECT_TRUE(service_->LostStore());
  EXPECT_TRUE(service_->Ended());
  rig_.Run(*second, 30'000);
  EXPECT_FALSE(second->LostStore());
  EXPECT_LE(rig_.clock.now - rig_.console.Service().Instance()->beatMs, store::kBeatIntervalMs);
}

TEST_F(ServiceTest, AStopLetsRunningChecksEndWithinItsGrace) {
  for (const bool inTime : {true, false}) {
    service_ = rig_.MakeService(rig_.stores.Service());
    rig_.runner.started.clear();
    Start();
    while (rig_.runner.started.empty()) {
      rig_.clock.Pass(1000);
      std::ignore = service_->Step();
    }
    const qint32 test = rig_.runner.Running()[0];
    rig_.runner.outcomes[test] =
        Outcome(TestState::Passed, inTime ? QStringLiteral("in time") : QStringLiteral("late"));
    service_->Stop(5'000);
    EXPECT_LE(service_->Step(), 5'000);
    EXPECT_EQ(State(), 3);
    EXPECT_FALSE(service_->Ended());
    if (!inTime) rig_.clock.Pass(5'000);
    if (inTime) rig_.runner.Deliver();
    std::ignore = service_->Step();
    EXPECT_TRUE(service_->Ended());
    EXPECT_FALSE(service_->LostStore());
    EXPECT_EQ(State(), 1);
    EXPECT_TRUE(rig_.runner.Running().empty());
    const QString results = store::Column(rig_.console.Tests().GetTestsByServer(rig_.server), "LastResult");
    EXPECT_TRUE(results.contains(QStringLiteral("in time")));
    EXPECT_FALSE(results.contains(QStringLiteral("late")));
  }
}

TEST_F(ServiceTest, AStoreThatIsAwayForAWhileCostsOneProblemAndNoResult) {
  Start();
  Run(1'000);
  const QString path = rig_.folder.StorePath();
  const QString away = rig_.folder.Path(QStringLiteral("away.db"));
  rig_.runner.outcomes[rig_.echo] = Outcome(TestState::Failed, QStringLiteral("while it was away"));
  ASSERT_TRUE(QFile::rename(path, away));
  Run(65'000);
  EXPECT_EQ(rig_.problems.size(), 1);
  EXPECT_EQ(Starts(rig_.echo), 1);
  ASSERT_TRUE(QFile::rename(away, path));
  Run(5'000);
  EXPECT_EQ(rig_.problems.size(), 2);
  EXPECT_TRUE(store::Column(rig_.console.Tests().GetTestsByServer(rig_.server), "LastResult")
                  .contains(QStringLiteral("while it was away")));
  EXPECT_EQ(rig_.sender.TakeSubjects(), QStringLiteral("PROBLEM north: Echo failed|PROBLEM north: Echo failed"));
  EXPECT_EQ(State(), 4);
}

TEST_F(ServiceTest, ARestoredStoreIsTakenUpAsItIs) {
  Start();
  Run(61'000);
  const QString backup = rig_.folder.Path(QStringLiteral("backup.db"));
  rig_.console.Backup(backup);
  rig_.runner.outcomes[rig_.echo] = Outcome(TestState::Failed, QStringLiteral("x"));
  ASSERT_TRUE(rig_.console.Tests().RemoveTest(rig_.page));
  Run(60'000);
  EXPECT_EQ(States(), QStringLiteral("3"));
  ASSERT_EQ(store::ErrorOf([&] { store::SqlStores::Restore(rig_.folder.Setup(), backup); }), QString());
  EXPECT_EQ(States(), QStringLiteral("1 1"));
  rig_.sender.TakeSubjects();
  Run(66'000);
  EXPECT_EQ(State(), 4);
  EXPECT_FALSE(service_->Ended());
  EXPECT_EQ(States(), QStringLiteral("3 1"));
  EXPECT_EQ(rig_.sender.TakeSubjects(), QStringLiteral("PROBLEM north: Echo failed|PROBLEM north: Echo failed"));
}

}  // namespace
}  // namespace quarl::service
