// How messages leave the outbox.
#include "service/Dispatcher.h"
#include "service/ServiceRig.h"

namespace quarl::service {
namespace {

class DispatcherTest : public ::testing::Test {
 protected:
  DispatcherTest() {
    EXPECT_FALSE(
        S().Claim({.id = kMe, .process = ProcessIdentity::Current(), .beatMs = rig_.clock.now, .state = 4}, 0));
  }
  store::ServiceStore& S() { return rig_.stores.Service(); }
  void Put(qint32 idAlert, const QString& subject, const QString& thread = QStringLiteral("t")) {
    store::OutgoingMessage message;
    message.idAlert = idAlert;
    message.alertName = QStringLiteral("Mail");
    message.subject = subject;
    message.thread = thread;
    message.createdMs = rig_.clock.now;
    store::ResultBatch batch;
    batch.messages = {message};
    EXPECT_TRUE(S().Record(kMe, batch));
    dispatcher_.Look();
  }
  QString Step() {
    dispatcher_.Step(kMe, true);
    return rig_.sender.TakeSubjects();
  }

  const QString kMe = QStringLiteral("me");
  ServiceRig rig_;
  int woken_ = 0;
  Dispatcher dispatcher_{S(), rig_.sender, rig_.clock, {.atOnce = 3}, [this] { ++woken_; }};
};

TEST_F(DispatcherTest, ADeliveryIsARecordInTheLogAndTheEndOfTheMessage) {
  Put(rig_.ownAlert, QStringLiteral("m"));
  EXPECT_EQ(Step(), QStringLiteral("m"));
  const AlertJob& job = rig_.sender.sent.at(0);
  EXPECT_EQ(job.module, QStringLiteral("Mail.dll"));
  EXPECT_EQ(job.properties, QStringLiteral("own"));
  EXPECT_FALSE(dispatcher_.IsIdle());
  rig_.sender.Deliver();
  EXPECT_EQ(woken_, 1);
  EXPECT_EQ(dispatcher_.UntilNextMs(), 0);
  EXPECT_EQ(Step(), QString());
  EXPECT_TRUE(dispatcher_.IsIdle());
  EXPECT_FALSE(dispatcher_.UntilNextMs());
  EXPECT_EQ(rig_.Log(), QStringLiteral("Alert \"Mail\": \"m\" delivered"));
}

TEST_F(DispatcherTest, AFailedMessageIsTriedWithGrowingPausesAndGivenUpAfterADay) {
  Put(rig_.ownAlert, QStringLiteral("m"));
  const qint64 start = rig_.clock.now;
  std::vector<qint64> pauses;
  qint64 last = start;
  EXPECT_EQ(Step(), QStringLiteral("m"));
  for (int attempt = 1; attempt < 1000; ++attempt) {
    rig_.sender.Deliver(QStringLiteral("no\nroute"));
    EXPECT_EQ(Step(), QString());
    const auto until = dispatcher_.UntilNextMs();
    if (!until) break;
    rig_.clock.Pass(*until);
    ASSERT_EQ(Step(), QStringLiteral("m"));
    pauses.push_back(rig_.clock.now - std::exchange(last, rig_.clock.now));
  }
  ASSERT_GT(pauses.size(), 8U);
  EXPECT_EQ(std::vector<qint64>(pauses.begin(), pauses.begin() + 4),
            (std::vector<qint64>{10'000, 20'000, 40'000, 80'000}));
  EXPECT_EQ(pauses.back(), 900'000);
  EXPECT_NEAR(static_cast<double>(last - start), 86'400'000.0, 900'000.0);
  EXPECT_FALSE(S().NextMessageMs());
  const QStringList log = rig_.Log().split(QStringLiteral(" Alert "));
  ASSERT_EQ(log.size(), 2);  // the first failure and the last
  EXPECT_TRUE(log[0].endsWith(QStringLiteral("not delivered, will be tried again: no route")));
  EXPECT_TRUE(log[1].endsWith(QStringLiteral("given up after %1 attempts: no route").arg(pauses.size() + 1)));
}

TEST_F(DispatcherTest, ARecoveryDoesNotOvertakeItsProblem) {
  Put(rig_.ownAlert, QStringLiteral("problem"));
  Put(rig_.ownAlert, QStringLiteral("recovery"));
  Put(rig_.groupAlert, QStringLiteral("other"));
  EXPECT_EQ(Step(), QStringLiteral("problem|other"));
  rig_.sender.Deliver(QStringLiteral("not now"));
  EXPECT_EQ(Step(), QString());
  rig_.clock.Pass(10'000);
  EXPECT_EQ(Step(), QStringLiteral("problem|other"));
  rig_.sender.Deliver();
  EXPECT_EQ(Step(), QStringLiteral("recovery"));
}

TEST_F(DispatcherTest, OnlySoManyAreOnTheirWay) {
  for (int i = 0; i < 5; ++i) Put(rig_.ownAlert, QString::number(i), QString::number(i));
  EXPECT_EQ(Step(), QStringLiteral("0|1|2"));
  EXPECT_EQ(Step(), QString());
  EXPECT_FALSE(dispatcher_.UntilNextMs());
  rig_.sender.Deliver();
  EXPECT_EQ(Step(), QStringLiteral("3|4"));
}

TEST_F(DispatcherTest, AMessageToARemovedAlertIsGivenUpInTheLog) {
  Put(rig_.ownAlert, QStringLiteral("m"));
  ASSERT_TRUE(rig_.console.Alerts().RemoveAlert(rig_.ownAlert));
  EXPECT_EQ(Step(), QString());
  EXPECT_EQ(Step(), QString());
  EXPECT_TRUE(dispatcher_.IsIdle());
  EXPECT_TRUE(rig_.Log().endsWith(QStringLiteral("the alert was removed")));
}

TEST_F(DispatcherTest, AnOutcomeIsKeptUntilTheStoreTakesIt) {
  Put(rig_.ownAlert, QStringLiteral("m"));
  EXPECT_EQ(Step(), QStringLiteral("m"));
  rig_.sender.Deliver();
  store::RunSql(rig_.folder.StorePath(), "ALTER TABLE outbox RENAME TO away");
  EXPECT_THROW(dispatcher_.Step(kMe, true), store::StoreError);
  EXPECT_FALSE(dispatcher_.IsIdle());
  store::RunSql(rig_.folder.StorePath(), "ALTER TABLE away RENAME TO outbox");
  EXPECT_EQ(Step(), QString());
  EXPECT_FALSE(S().NextMessageMs());
  EXPECT_TRUE(rig_.Log().endsWith(QStringLiteral("delivered")));
}

}  // namespace
}  // namespace quarl::service
