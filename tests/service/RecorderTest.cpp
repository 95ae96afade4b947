// What results make of tests and servers, what is logged and told, and when it is written.
#include <QDateTime>

#include "service/Recorder.h"
#include "service/ServiceRig.h"

namespace quarl::service {
namespace {

using store::TestState;

class RecorderTest : public ::testing::Test {
 protected:
  RecorderTest() {
    EXPECT_FALSE(
        S().Claim({.id = kMe, .process = ProcessIdentity::Current(), .beatMs = rig_.clock.now, .state = 4}, 0));
    Restart();
  }
  store::ServiceStore& S() { return rig_.stores.Service(); }
  /// What a service does that begins anew.
  void Restart() {
    recorder_ = std::make_unique<Recorder>(S(), policy_, rig_.clock);
    recorder_->Load(S().ReadStates());
    SetPlan();
  }
  void SetPlan() {
    auto plan = std::make_unique<PlanIndex>(S().ReadPlan());
    recorder_->SetPlan(*plan);
    plan_ = std::move(plan);
    EXPECT_TRUE(recorder_->Flush(kMe));
  }
  void Add(qint32 test, char result) {
    rig_.clock.Pass(1000);
    const TestState state = result == 'p' ? TestState::Passed : result == 'f' ? TestState::Failed : TestState::NotRun;
    recorder_->Add(test, Outcome(state, QStringLiteral("text")));
    EXPECT_TRUE(recorder_->Flush(kMe));
  }
  /// The subjects of new messages to the server's own alert, joined by "|".
  QString Told() {
    QStringList subjects;
    for (bool more = true; more;) {
      more = false;
      for (const store::ClaimedMessage& message : S().ClaimMessages(kMe, rig_.clock.now, 100)) {
        if (message.message.idAlert == rig_.ownAlert) subjects.append(message.message.subject);
        last_ = message.message;
        EXPECT_TRUE(S().FinishMessage(kMe, message.id, {0, store::Severity::Information, QStringLiteral("sent")}));
        more = true;
      }
    }
    return subjects.join(u'|');
  }
  QString TestStates() { return store::Column(rig_.console.Tests().GetTestsByServer(rig_.server), "IDTestState"); }
  QString ServerState() { return store::Column(rig_.console.Servers().GetServersByGroup(rig_.group), "IDTestState"); }

  const QString kMe = QStringLiteral("me");
  ServiceRig rig_;
  DirectPolicy policy_{QTimeZone("Europe/Rome")};
  std::unique_ptr<PlanIndex> plan_;
  std::unique_ptr<Recorder> recorder_;
  store::OutgoingMessage last_;
};

TEST_F(RecorderTest, ATestCountsAsFailedFromTheThresholdToTheNextSuccess) {
  const struct {
    int threshold;
    const char* results;
    const char* states;   // of the server, after each result
    const char* changes;  // P problem, R recovery, after each result
  } cases[] = {
      {1, "pfffpp", "133311", ".P..R."},
      {3, "pffffp", "122331", "...P.R"},
      {3, "ffpffp", "221221", "......"},
      {3, "ffnfnp", "222331", "...P.R"},
      {0, "fp", "31", "PR"},
      {99, "fffffffffffp", "222222222331", ".........P.R"},
      {2, "fpffpffpn", "212312312", "...PR.PR."},
  };
  ASSERT_TRUE(rig_.console.Tests().RemoveTest(rig_.page));
  for (const auto& [threshold, results, states, changes] : cases) {
    ASSERT_TRUE(rig_.console.Servers().SetFailThreshold(rig_.server, static_cast<qint16>(threshold)));
    SetPlan();
    Add(rig_.echo, 'p');
    std::ignore = Told();
    for (std::size_t i = 0; results[i] != 0; ++i) {
      Add(rig_.echo, results[i]);
      const QString told = Told();
      const char change = told.startsWith(QStringLiteral("PROBLEM"))    ? 'P'
                          : told.startsWith(QStringLiteral("RECOVERY")) ? 'R'
                                                                        : '.';
      EXPECT_EQ(change, changes[i]) << results << " at " << i;
      EXPECT_EQ(ServerState(), QString(QLatin1Char(states[i]))) << results << " at " << i;
      EXPECT_EQ(TestStates(), QString(QLatin1Char(results[i] == 'p' ? '1' : results[i] == 'f' ? '3' : '2')));
      if (i == 2) Restart();  // nothing of it is lost
    }
  }
}

TEST_F(RecorderTest, OneChangeIsOneMessageToEachAlert) {
  ASSERT_TRUE(rig_.console.Servers().UpdateServer(rig_.server, QStringLiteral("no\nrth"), {}, rig_.group));
  SetPlan();
  const struct {
    qint32 test;
    char result;
    const char* told;
    const char* log;
  } steps[] = {
      {rig_.echo, 'f', "PROBLEM no rth: Echo failed", "no rth (): Echo failed: text (server failed)"},
      {rig_.page, 'f', "PROBLEM no rth: Page failed too", "no rth (): Page failed: text"},
      {rig_.echo, 'p', "RECOVERY no rth: Echo passed, 1 test failed", "no rth (): Echo passed again: text"},
      {rig_.echo, 'f', "PROBLEM no rth: Echo failed too", "no rth (): Echo failed: text"},
      {rig_.page, 'p', "RECOVERY no rth: Page passed, 1 test failed", "no rth (): Page passed again: text"},
      {rig_.echo, 'p', "RECOVERY no rth: Echo passed", "no rth (): Echo passed again: text (server recovered)"},
  };
  QString thread;
  for (const auto& [test, result, told, log] : steps) {
    Add(test, result);
    const std::vector<store::ClaimedMessage> messages = S().ClaimMessages(kMe, rig_.clock.now, 100);
    ASSERT_EQ(messages.size(), 2U) << told;
    EXPECT_EQ(messages[0].message.idAlert, rig_.ownAlert);
    EXPECT_EQ(messages[1].message.idAlert, rig_.groupAlert);
    for (const store::ClaimedMessage& claimed : messages) {
      EXPECT_EQ(claimed.message.subject.toStdString(), told);
      if (thread.isEmpty()) thread = claimed.message.thread;
      EXPECT_EQ(claimed.message.thread, thread);
      EXPECT_TRUE(S().FinishMessage(kMe, claimed.id, {0, store::Severity::Information, QStringLiteral("sent")}));
    }
    EXPECT_TRUE(rig_.Log().contains(QLatin1String(log))) << log;
    EXPECT_TRUE(rig_.console.Log().ClearLogs());
  }
  Add(rig_.echo, 'f');
  EXPECT_NE(S().ClaimMessages(kMe, rig_.clock.now, 1).at(0).message.thread, thread) << "the next outage";
}

TEST_F(RecorderTest, TheTextSaysWhatIsKnown) {
  rig_.clock.now = QDateTime(QDate(2024, 7, 1), QTime(10, 0), Qt::UTC).toMSecsSinceEpoch() - 1000;
  recorder_->SetPlan(*plan_);
  Add(rig_.echo, 'f');
  std::ignore = Told();
  EXPECT_EQ(last_.text.toStdString(),
            "Server:   north\nAddress:  10.0.0.1\nGroup:    edge\nTest:     Echo\nState:    failed\nResult:   text\n"
            "Time:     2024-07-01 12:00:00 +02:00\n\n"
            "The server counts as failed since 2024-07-01 12:00:00 +02:00; now 1 test failed.\n");
}

TEST_F(RecorderTest, AServerWhoseFailedTestIsRemovedRecovers) {
  for (const bool running : {true, false}) {
    const qint32 extra = rig_.console.Tests().AddTest(rig_.server, rig_.testType, {});
    SetPlan();
    Add(rig_.echo, 'p');
    Add(rig_.page, 'p');
    Add(extra, 'f');
    EXPECT_FALSE(Told().isEmpty());
    EXPECT_EQ(ServerState(), QStringLiteral("3"));
    ASSERT_TRUE(rig_.console.Tests().RemoveTest(extra));
    if (running) {
      SetPlan();
    } else {
      Restart();
    }
    EXPECT_EQ(Told(), QStringLiteral("RECOVERY north: its failed tests are no more"));
    EXPECT_EQ(ServerState(), QStringLiteral("1"));
  }
  ASSERT_TRUE(rig_.console.Tests().RemoveTest(rig_.echo) && rig_.console.Tests().RemoveTest(rig_.page));
  SetPlan();
  EXPECT_EQ(ServerState(), QStringLiteral("-"));
  recorder_->Add(rig_.echo, Outcome(TestState::Failed));  // it was still running
  EXPECT_FALSE(recorder_->UntilFlushMs());
}

TEST_F(RecorderTest, WhatCannotBeRunIsALineInTheLogOnceAndNoFailure) {
  for (const char result : {'n', 'n', 'p', 'n'}) Add(rig_.echo, result);
  EXPECT_EQ(Told(), QString());
  EXPECT_EQ(rig_.Log().count(QStringLiteral("could not be run")), 2);
  EXPECT_EQ(store::Column(rig_.console.Log().GetLogs(), "IDSeverity"), QStringLiteral("2 2"));
}

TEST_F(RecorderTest, ResultsAreWrittenTogether) {
  EXPECT_FALSE(recorder_->UntilFlushMs());
  recorder_->Add(rig_.echo, Outcome(TestState::Passed));
  EXPECT_EQ(recorder_->UntilFlushMs(), 1000) << "nobody waits for a result that changes nothing";
  rig_.clock.Pass(700);
  EXPECT_EQ(recorder_->UntilFlushMs(), 300);
  recorder_->Add(rig_.page, Outcome(TestState::Passed));
  EXPECT_EQ(recorder_->UntilFlushMs(), 200) << "the server's state has changed";
  rig_.clock.Pass(50);
  recorder_->Add(rig_.echo, Outcome(TestState::Passed));
  EXPECT_EQ(recorder_->UntilFlushMs(), 150);
  recorder_->Answer(1);
  EXPECT_EQ(recorder_->UntilFlushMs(), 0);
  const quint64 before = rig_.stores.Statistics().transactions;
  EXPECT_TRUE(recorder_->Flush(kMe));
  EXPECT_EQ(rig_.stores.Statistics().transactions, before + 1);
  EXPECT_EQ(TestStates(), QStringLiteral("1 1"));

  std::vector<qint32> many;
  for (int i = 0; i < 1000; ++i) many.push_back(rig_.stores.Tests().AddTest(rig_.server, rig_.testType, {}));
  SetPlan();
  for (int round = 0; round < 5; ++round) {
    EXPECT_NE(recorder_->UntilFlushMs(), 0);
    for (const qint32 id : many) recorder_->Add(id, Outcome(TestState::Passed));
  }
  EXPECT_EQ(recorder_->UntilFlushMs(), 0);
}

TEST_F(RecorderTest, WhatCannotBeWrittenIsKept) {
  recorder_->Add(rig_.echo, Outcome(TestState::Failed, QStringLiteral("first")));
  EXPECT_FALSE(recorder_->Flush(QStringLiteral("another")));
  store::RunSql(rig_.folder.StorePath(), "ALTER TABLE outbox RENAME TO away");
  EXPECT_THROW(std::ignore = recorder_->Flush(kMe), store::StoreError);
  store::RunSql(rig_.folder.StorePath(), "ALTER TABLE away RENAME TO outbox");
  recorder_->Add(rig_.echo, Outcome(TestState::Failed, QStringLiteral("second")));
  EXPECT_TRUE(recorder_->Flush(kMe));
  EXPECT_TRUE(store::Column(rig_.console.Tests().GetTestsByServer(rig_.server), "LastResult")
                  .contains(QStringLiteral("second")));
  EXPECT_EQ(S().ReadStates().tests.at(0).consecutiveFailures, 2);
  EXPECT_EQ(Told(), QStringLiteral("PROBLEM north: Echo failed"));
}

}  // namespace
}  // namespace quarl::service
