// What becomes of alarms when the program is killed at any moment.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QRegularExpression>
#include <map>
#include <random>

#include "service/Dispatcher.h"
#include "service/Recorder.h"
#include "service/ServiceRig.h"

namespace quarl::service {
namespace {

constexpr int kServers = 6;
constexpr int kRounds = 20;
const QString kMe = QStringLiteral("me");

/// Delivers into a file at once, and says so a little later.
class FileSender : public AlertSender {
 public:
  explicit FileSender(const QString& path)
      : file_(::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT, 0600)) {}
  ~FileSender() override { ::close(file_); }
  void Send(const AlertJob& job, Done done) override {
    const QByteArray line = job.text.section(QStringLiteral("Result:   "), 1).section(u'\n', 0, 0).toUtf8() + '\n';
    if (::write(file_, line.constData(), static_cast<std::size_t>(line.size())) != line.size()) ::_exit(2);
    waiting_.push_back({turn_ + 3, std::move(done)});
  }
  void Abort() override { waiting_.clear(); }
  void Turn() {
    for (++turn_; !waiting_.empty() && waiting_.front().first <= turn_; waiting_.pop_front()) {
      waiting_.front().second({true, {}});
    }
  }

 private:
  int file_;
  int turn_ = 0;
  std::deque<std::pair<int, Done>> waiting_;
};

/// A recorder and a dispatcher of a store, as a program that was just started has them.
struct Program {
  Program(store::SqlStores& stores, const Clock& clock, AlertSender& sender)
      : store(stores.Service()), recorder(store, policy, clock), dispatcher(store, sender, clock, {}, {}) {
    const store::ServiceInstance me{
        .id = kMe, .process = ProcessIdentity::Current(), .beatMs = clock.NowMs(), .state = 4};
    EXPECT_FALSE(store.Claim(me, clock.NowMs() + dispatcher.PauseMs(1)));
    recorder.Load(store.ReadStates());
    plan = PlanIndex(store.ReadPlan());
    recorder.SetPlan(plan);
  }
  void Step() {
    EXPECT_TRUE(recorder.Flush(kMe));
    if (recorder.TakeHasMessages()) dispatcher.Look();
    dispatcher.Step(kMe, true);
  }
  store::ServiceStore& store;
  DirectPolicy policy{QTimeZone::utc()};
  PlanIndex plan;
  Recorder recorder;
  Dispatcher dispatcher;
};

class OutboxKillTest : public ::testing::Test {
 protected:
  OutboxKillTest() {
    store::SqlStores stores(StoreSetup());
    EXPECT_TRUE(stores.Service().SetLogRetention(1'000'000));
    const qint32 testType = folder_.AddTestType(stores, QStringLiteral("Ping"));
    const qint32 alertType = folder_.AddAlertType(stores, QStringLiteral("Mail"));
    for (int i = 0; i < kServers; ++i) {
      const qint32 server = stores.Servers().AddServer(QString::number(i), {}, 0);
      EXPECT_TRUE(stores.Servers().SetFailThreshold(server, 1));
      EXPECT_GT(stores.Tests().AddTest(server, testType, {}), 0);
      EXPECT_GT(stores.Alerts().AddServerAlert(server, alertType, {}), 0);
    }
  }
  store::SqlSetup StoreSetup() {
    store::SqlSetup setup = folder_.Setup();
    setup.clock = &clock_;
    setup.syncEveryChange = false;
    return setup;
  }
  QString SentPath() { return folder_.Path(QStringLiteral("sent")); }

  /// Lets tests fail and pass again for ever. The clock stands still, so that what was on its way in a program that was
  /// killed stays there to the end.
  [[noreturn]] void Flap() {
    store::SqlStores stores(StoreSetup());
    FileSender sender(SentPath());
    Program program(stores, clock_, sender);
    for (int i = 0;; ++i) {
      const qint32 test = i % kServers + 1;
      const store::TestState state = i / kServers % 2 == 0 ? store::TestState::Failed : store::TestState::Passed;
      program.recorder.Add(test, Outcome(state, QStringLiteral("no.%1.%2").arg(::getpid()).arg(i)));
      program.Step();
      sender.Turn();
    }
  }

  store::StoreFolder folder_;
  RigClock clock_;
};

TEST_F(OutboxKillTest, NoAlarmIsLostAndNoneComesMoreThanTwice) {
  std::mt19937 random(std::random_device{}());
  for (int round = 0; round < kRounds; ++round) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      try {
        Flap();
      } catch (...) {
        ::_exit(1);
      }
    }
    ::usleep(static_cast<useconds_t>(30'000 + random() % 60'000));  // the moment of the kill is what is tried out
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the program gave up";
  }

  store::SqlStores stores(StoreSetup());
  FileSender sender(SentPath());
  Program program(stores, clock_, sender);
  for (int i = 0; i < 100'000 && (stores.Service().NextMessageMs() || !program.dispatcher.IsIdle()); ++i) {
    clock_.Pass(1000);
    program.Step();
    sender.Turn();
  }
  std::map<QString, int> sent;
  for (const QString& line : QString::fromUtf8(store::BytesOf(SentPath())).split(u'\n', Qt::SkipEmptyParts))
    ++sent[line];
  const QRegularExpression alarm(QStringLiteral("(failed|passed again): (no\\.\\d+\\.\\d+)"));
  int alarms = 0, delivered = 0, twice = 0;
  for (store::RecordSet log = stores.Log().GetLogs(); !log.Eof(); log.MoveNext()) {
    const QString line = log.Value("LogDescription").toString();
    if (line.endsWith(QStringLiteral(" delivered"))) ++delivered;
    const QRegularExpressionMatch match = alarm.match(line);
    if (!match.hasMatch()) continue;
    ++alarms;
    const int times = sent[match.captured(2)];
    EXPECT_TRUE(times == 1 || times == 2) << line.toStdString() << " was sent " << times << " times";
    twice += times == 2 ? 1 : 0;
  }
  EXPECT_EQ(delivered, alarms);
  EXPECT_EQ(static_cast<int>(sent.size()), alarms) << "something was sent that no state stands for";
  EXPECT_GT(alarms, kRounds);
  EXPECT_GT(twice, 0) << "no kill came between sending and writing";
  EXPECT_EQ(store::AskSql(folder_.StorePath(), "PRAGMA integrity_check"), QStringLiteral("ok"));
}

}  // namespace
}  // namespace quarl::service
