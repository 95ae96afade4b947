#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "service/workers/HostedRunner.h"

namespace quarl::service {
namespace {

using store::TestState;

constexpr int kLimit = 60'000;
constexpr qint64 kMemory = std::min(kWorkerMemory, qint64{512} << 20);

/// The event loop until something is so.
bool Until(const std::function<bool()>& so, int limitMs = 30'000) {
  QElapsedTimer elapsed;
  for (elapsed.start(); elapsed.elapsed() < limitMs;) {
    if (so()) return true;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
  }
  return so();
}

class WorkersTest : public ::testing::Test {
 protected:
  WorkersTest() {
    for (const char* kind : {"tests", "alerts"}) {
      const QString folder = QStringLiteral("plugins/") + QLatin1String(kind);
      QDir(install_.path()).mkpath(folder);
      QFile::copy(QStringLiteral(MOODY_FOLDER) + u'/' + QLatin1String(kind) + QStringLiteral("/moody.dll"),
                  install_.filePath(folder + QStringLiteral("/moody.dll")));
    }
    for (const char* module : {"/stepped.dll", "/few.dll"}) {
      QFile::copy(QStringLiteral(MOODY_FOLDER "/tests") + QLatin1String(module),
                  install_.filePath(QStringLiteral("plugins/tests") + QLatin1String(module)));
    }
  }

  PoolSetup Setup() const {
    return {.program = QStringLiteral(QUARL_LAYOUT_DIR) + QStringLiteral("/quarl-modulehost"),
            .threadsAWorker = 8,
            .memoryLimit = kMemory};
  }
  static CheckJob Job(const QString& mood, int limitMs = kLimit) {
    return {1, QStringLiteral("moody.dll"), QStringLiteral("web"), QStringLiteral("10.0.0.1"), mood, limitMs};
  }
  static CheckJob Stepped(const QString& mood, const char* module = "stepped.dll") {
    CheckJob job = Job(mood);
    job.module = QLatin1String(module);
    return job;
  }
  /// All outcomes, in the order of the jobs.
  std::vector<CheckOutcome> Run(const std::vector<CheckJob>& jobs) {
    std::vector<std::optional<CheckOutcome>> outcomes(jobs.size());
    std::size_t done = 0;
    for (std::size_t job = 0; job < jobs.size(); ++job) {
      runner_.Start(jobs[job], [&outcomes, &done, job](const CheckOutcome& outcome) {
        EXPECT_FALSE(outcomes[job]) << "told twice";
        outcomes[job] = outcome;
        ++done;
      });
    }
    EXPECT_EQ(done, 0U) << "told from within";
    EXPECT_TRUE(Until([&] { return done == jobs.size(); }));
    std::vector<CheckOutcome> result;
    for (const auto& outcome : outcomes) result.push_back(outcome.value_or(CheckOutcome{}));
    return result;
  }
  CheckOutcome RunOne(const CheckJob& job) { return Run({job}).front(); }
  /// Waits for the number that a process left behind has written, and until that process is gone.
  static bool LeftBehindAndGone(const QString& file, int limitMs) {
    pid_t left = 0;
    const bool written = Until([&] {
      QFile number(file);
      if (number.open(QIODevice::ReadOnly)) left = static_cast<pid_t>(number.readAll().trimmed().toInt());
      return left > 0;
    });
    return written && Until([&] { return kill(left, 0) != 0; }, limitMs);
  }

  QTemporaryDir install_;
  ChildKeeper keeper_;
  WorkerPool pool_{Setup(), keeper_};
  HostedRunner runner_{pool_, InstallPaths(install_.path())};
};

struct MoodCase {
  const char* mood;
  TestState state;
  const char* text;
};

TEST_F(WorkersTest, OutcomesOfOneCall) {
  for (const MoodCase& mood : {MoodCase{"", TestState::Passed, "well"},
                               {"fail", TestState::Failed, "it fails  really"},
                               {"odd", TestState::NotRun, "odd"},
                               {"crash", TestState::NotRun, "The module moody.dll crashed (SIGABRT)."},
                               {"exit", TestState::NotRun, "The module moody.dll ended its process with code 7."},
                               {kMemory > 0 ? "greedy" : "", kMemory > 0 ? TestState::NotRun : TestState::Passed,
                                kMemory > 0 ? "no more memory" : "well"},
                               {"", TestState::Passed, "well"}}) {
    const CheckOutcome outcome = RunOne(Job(QLatin1String(mood.mood)));
    EXPECT_EQ(outcome.state, mood.state) << mood.mood;
    EXPECT_EQ(outcome.text.toStdString(), mood.text) << mood.mood;
  }
}

TEST_F(WorkersTest, AModuleThatCannotBeCalledSaysWhy) {
  for (const char* module : {"", "../moody.dll", "plugins/tests/moody.dll", "missing.dll"}) {
    CheckJob job = Job({});
    job.module = QLatin1String(module);
    const CheckOutcome outcome = RunOne(job);
    EXPECT_EQ(outcome.state, TestState::NotRun) << module;
    EXPECT_FALSE(outcome.text.isEmpty()) << module;
  }
  CheckJob job = Job(QString(2'000'000, u'x'));
  EXPECT_EQ(RunOne(job).text, QStringLiteral("The properties are too long to be handed to a module."));
  EXPECT_EQ(RunOne(Job({})).state, TestState::Passed);
}

TEST_F(WorkersTest, OneProcessServesManyCalls) {
  const std::vector<CheckOutcome> outcomes = Run(std::vector<CheckJob>(500, Job({})));
  std::set<QString> processes;
  for (const CheckOutcome& outcome : outcomes) {
    EXPECT_EQ(outcome.state, TestState::Passed);
    processes.insert(outcome.performance);
  }
  EXPECT_LE(processes.size(), 4U);
}

TEST_F(WorkersTest, ACrashFailsTheGuiltyCallOnly) {
  std::vector<CheckJob> jobs(30, Job(QStringLiteral("sleep 50")));
  jobs[7] = Job(QStringLiteral("crash"));
  jobs[20] = Job(QStringLiteral("crash"));
  const std::vector<CheckOutcome> outcomes = Run(jobs);
  for (std::size_t job = 0; job < jobs.size(); ++job) {
    const bool guilty = job == 7 || job == 20;
    EXPECT_EQ(outcomes[job].state, guilty ? TestState::NotRun : TestState::Passed) << job;
  }
}

TEST_F(WorkersTest, ChecksInStepsNeedNoThreadsAndACrashFailsTheGuiltyOneOnly) {
  const QByteArray pipe = QFile::encodeName(install_.filePath(QStringLiteral("pipe")));
  ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
  constexpr int kChecks = 300;  // more than all threads of all workers
  std::map<int, CheckOutcome> outcomes;
  const auto start = [&](int check, const QString& mood) {
    runner_.Start(Stepped(mood), [&outcomes, check](const CheckOutcome& outcome) { outcomes[check] = outcome; });
  };
  start(0, QStringLiteral("time 0"));
  ASSERT_TRUE(Until([&] { return outcomes.size() == 1; }));
  for (int check = 1; check <= kChecks; ++check) start(check, QStringLiteral("pipe ") + QFile::decodeName(pipe));
  start(kChecks + 1, QStringLiteral("time 0"));
  ASSERT_TRUE(Until([&] { return outcomes.contains(kChecks + 1); })) << "all others wait, and still there is room";
  start(kChecks + 2, QStringLiteral("crash"));
  const bool done = Until([&] {
    close(open(pipe.constData(), O_WRONLY | O_NONBLOCK));  // ends the waiting, again and again
    return outcomes.size() == kChecks + 3;
  });
  ASSERT_TRUE(done);
  EXPECT_EQ(outcomes[kChecks + 2].text, QStringLiteral("The module stepped.dll crashed (SIGABRT)."));
  for (int check = 0; check <= kChecks + 1; ++check) EXPECT_EQ(outcomes[check].state, TestState::Passed) << check;
}

TEST_F(WorkersTest, AModuleSaysHowManyChecksInStepsAProcessHasAtOnce) {
  ASSERT_EQ(RunOne(Stepped(QStringLiteral("time 0"), "few.dll")).state, TestState::Passed);
  const std::vector<CheckOutcome> outcomes =
      Run(std::vector<CheckJob>(12, Stepped(QStringLiteral("time 300"), "few.dll")));
  std::map<QString, int> threads;
  for (const CheckOutcome& outcome : outcomes) ++threads[outcome.performance];
  EXPECT_EQ(threads.size(), 4U) << "with three in each they need all processes that a module may have";
}

TEST_F(WorkersTest, AStepThatHangsIsNamedAndBlamesNobodyElse) {
  std::vector<CheckJob> jobs(40, Stepped(QStringLiteral("time 10")));
  jobs[3] = jobs[30] = Stepped(QStringLiteral("stuck"));
  const std::vector<CheckOutcome> outcomes = Run(jobs);
  for (std::size_t job = 0; job < jobs.size(); ++job) {
    const bool guilty = job == 3 || job == 30;
    EXPECT_EQ(outcomes[job].state, guilty ? TestState::NotRun : TestState::Passed) << job;
    const QString text = guilty ? QStringLiteral("A step of this check did not come back within 5 seconds.")
                                : QStringLiteral("web after 2 steps, came 0");
    EXPECT_EQ(outcomes[job].text, text) << job;
  }
}

TEST_F(WorkersTest, AHungCallIsTakenDownAloneAndInTime) {
  const QString file = install_.filePath(QStringLiteral("left"));
  std::vector<CheckJob> jobs(10, Job(QStringLiteral("sleep 300")));
  jobs[4] = Job(QStringLiteral("fork ") + file, 500);
  QElapsedTimer elapsed;
  elapsed.start();
  const std::vector<CheckOutcome> outcomes = Run(jobs);
  for (std::size_t job = 0; job < jobs.size(); ++job) {
    EXPECT_EQ(outcomes[job].state, job == 4 ? TestState::Failed : TestState::Passed) << job;
  }
  EXPECT_EQ(outcomes[4].text, QStringLiteral("The module moody.dll did not answer within 500 ms."));
  EXPECT_TRUE(LeftBehindAndGone(file, 1000)) << "a process that forked away lives on";
}

TEST_F(WorkersTest, AModuleThatHangsTakesNobodyElsesPlace) {
  ASSERT_TRUE(QFile::copy(install_.filePath(QStringLiteral("plugins/tests/moody.dll")),
                          install_.filePath(QStringLiteral("plugins/tests/other.dll"))));
  HostedRunner runner(pool_, InstallPaths(install_.path()), 64);
  for (int call = 0; call < 500; ++call) runner.Start(Job(QStringLiteral("hang")), [](const CheckOutcome&) {});
  ASSERT_TRUE(runner.HasRoom());
  CheckJob job = Job({});
  job.module = QStringLiteral("other.dll");
  std::optional<CheckOutcome> outcome;
  runner.Start(job, [&](const CheckOutcome& result) { outcome = result; });
  EXPECT_TRUE(Until([&] { return outcome.has_value(); }));
  EXPECT_EQ(outcome->state, TestState::Passed);
}

TEST_F(WorkersTest, AnUrgentCallComesBeforeThoseThatWait) {
  std::vector<int> order;
  for (int call = 0; call < 200; ++call) {
    CheckJob job = Job(QStringLiteral("sleep 20"));
    job.urgent = call == 199;
    runner_.Start(job, [&order, call](const CheckOutcome&) { order.push_back(call); });
  }
  ASSERT_TRUE(Until([&] { return order.size() == 200; }));
  EXPECT_LT(std::find(order.begin(), order.end(), 199) - order.begin(), 100);
}

TEST_F(WorkersTest, WhatAModulePrintsGoesNowhere) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(RunOne(Job(QStringLiteral("print"))).state, TestState::Passed);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(WorkersTest, AFloodOfLinesForTheLogIsCutAndTheCheckIsMade) {
  int lines = 0;
  pool_.log = [&](const QString& line) {
    EXPECT_EQ(line, QStringLiteral("moody.dll: this again"));
    ++lines;
  };
  QElapsedTimer elapsed;
  elapsed.start();
  EXPECT_EQ(RunOne(Job(QStringLiteral("chatter"))).state, TestState::Passed);
  EXPECT_GE(lines, 10);
  EXPECT_LE(lines, 10 * (2 + elapsed.elapsed() / 100)) << "more than ten in a tenth of a second";
}

TEST_F(WorkersTest, WhatACheckLeavesBehindIsEnded) {
  const QString file = install_.filePath(QStringLiteral("left"));
  EXPECT_EQ(RunOne(Job(QStringLiteral("leave ") + file)).state, TestState::Passed);
  EXPECT_TRUE(LeftBehindAndGone(file, 5000));
}

TEST_F(WorkersTest, AbortEndsEverythingAndTellsNothing) {
  const QString file = install_.filePath(QStringLiteral("left"));
  bool told = false;
  runner_.Start(Job(QStringLiteral("fork ") + file), [&](const CheckOutcome&) { told = true; });
  ASSERT_TRUE(Until([&] { return QFileInfo(file).size() > 0; }));
  runner_.Abort();
  EXPECT_TRUE(LeftBehindAndGone(file, 5000));
  EXPECT_FALSE(told);
  EXPECT_TRUE(runner_.HasRoom());
}

TEST_F(WorkersTest, ANewFileIsLoadedAnew) {
  const QString before = RunOne(Job({})).performance;
  const QString file = install_.filePath(QStringLiteral("plugins/tests/moody.dll"));
  QFile again(file);
  ASSERT_TRUE(again.open(QIODevice::ReadWrite));
  ASSERT_TRUE(again.setFileTime(QDateTime::currentDateTimeUtc().addSecs(60), QFileDevice::FileModificationTime));
  again.close();
  EXPECT_TRUE(Until([&] { return RunOne(Job({})).performance != before; }));
}

TEST_F(WorkersTest, WithoutAHostNoCheckIsMade) {
  PoolSetup setup = Setup();
  setup.program = install_.filePath(QStringLiteral("quarl-modulehost"));
  WorkerPool pool(setup, keeper_);
  HostedRunner runner(pool, InstallPaths(install_.path()));
  std::optional<CheckOutcome> outcome;
  runner.Start(Job({}), [&](const CheckOutcome& result) { outcome = result; });
  ASSERT_TRUE(Until([&] { return outcome.has_value(); }));
  EXPECT_EQ(outcome->state, TestState::NotRun);
  EXPECT_TRUE(outcome->text.contains(QStringLiteral("could not be started"))) << outcome->text.toStdString();
}

TEST_F(WorkersTest, AControlGroupHoldsWhatAWorkerStarts) {
  const QString root = QStringLiteral("/sys/fs/cgroup/unified/quarl-test-%1").arg(getpid());
  if (!QDir().mkdir(root)) GTEST_SKIP() << "no control group may be made in " << root.toStdString();
  {
    CgroupTree tree(root);
    PoolSetup setup = Setup();
    setup.cgroups = &tree;
    WorkerPool pool(setup, keeper_);
    HostedRunner runner(pool, InstallPaths(install_.path()));
    std::optional<CheckOutcome> outcome;
    runner.Start(Job(QStringLiteral("hang"), 300), [&](const CheckOutcome& result) { outcome = result; });
    EXPECT_TRUE(Until([&] {
      QFile processes(root + QStringLiteral("/worker-1/cgroup.procs"));
      return processes.open(QIODevice::ReadOnly) && !processes.readAll().isEmpty();
    }));
    ASSERT_TRUE(Until([&] { return outcome.has_value(); }));
    EXPECT_EQ(outcome->state, TestState::Failed);
  }
  EXPECT_TRUE(QDir().rmdir(root)) << "a group of a worker was left";
}

/// Processes that no kill ends, as those that wait for a file server that has gone: they are frozen.
class Freezer {
 public:
  Freezer() { made_ = QDir().mkdir(path_); }
  ~Freezer() {
    Thaw();
    Until([&] { return QDir().rmdir(path_) || !made_; });
  }
  bool IsMade() const { return made_; }
  bool Freeze(const QByteArray& process) const {
    return Write("/cgroup.procs", process) && Write("/freezer.state", "FROZEN");
  }
  void Thaw() const { Write("/freezer.state", "THAWED"); }

 private:
  bool Write(const char* name, const QByteArray& text) const {
    QFile file(path_ + QLatin1String(name));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) > 0;
  }
  QString path_ = QStringLiteral("/sys/fs/cgroup/freezer/quarl-test-%1").arg(getpid());
  bool made_ = false;
};

TEST_F(WorkersTest, AModuleWhoseProcessesDoNotEndIsNotCalledUntilTheyDo) {
  const Freezer freezer;
  if (!freezer.IsMade()) GTEST_SKIP() << "no control group that freezes may be made in /sys/fs/cgroup/freezer";
  QString sentence;
  for (int round = 0; round < 20 && sentence.isEmpty(); ++round) {
    const QByteArray process = RunOne(Job({})).performance.section(u'=', 1).toLatin1();
    std::vector<std::optional<CheckOutcome>> outcomes(3);
    for (int check = 0; check < 3; ++check) {
      const auto done = [&outcomes, check](const CheckOutcome& outcome) { outcomes.at(check) = outcome; };
      runner_.Start(check == 0 ? Job(QStringLiteral("hang"), 200) : Job(QStringLiteral("sleep 100")), done);
    }
    ASSERT_TRUE(freezer.Freeze(process)) << process.constData();
    ASSERT_TRUE(Until([&] { return outcomes[0] && outcomes[1] && outcomes[2]; }));
    EXPECT_EQ(outcomes[0]->state, TestState::Failed);
    for (int check : {1, 2}) {
      if (outcomes[check]->state == TestState::NotRun) sentence = outcomes[check]->text;
      EXPECT_TRUE(!sentence.isEmpty() || outcomes[check]->state == TestState::Passed) << "a neighbour is blamed";
    }
  }
  EXPECT_EQ(sentence, QStringLiteral("The module moody.dll is not called: 8 processes of it do not end."));
  freezer.Thaw();
  EXPECT_TRUE(Until([&] { return RunOne(Job({})).state == TestState::Passed; }));
}

TEST_F(WorkersTest, AHostThatSaysStuckAndStaysBlamesNobodyElse) {
  PoolSetup setup = Setup();
  setup.program = QStringLiteral(STAYING_HOST);
  setup.workersAModule = 1;
  WorkerPool pool(setup, keeper_);
  HostedRunner runner(pool, InstallPaths(install_.path()));
  std::map<int, CheckOutcome> outcomes;
  for (int check = 0; check < 4; ++check) {
    runner.Start(Job(check == 1 ? QStringLiteral("stuck") : QStringLiteral("wait"), 5'000),
                 [&outcomes, check](const CheckOutcome& outcome) { outcomes[check] = outcome; });
  }
  ASSERT_TRUE(Until([&] { return outcomes.size() == 4; }));
  for (const auto& [check, outcome] : outcomes) {
    EXPECT_EQ(outcome.state, check == 1 ? TestState::NotRun : TestState::Passed) << outcome.text.toStdString();
  }
}

TEST_F(WorkersTest, AlertsAreDeliveredOrSayWhyNot) {
  HostedSender sender(pool_, InstallPaths(install_.path()));
  AlertJob job;
  job.module = QStringLiteral("moody.dll");
  job.subject = QStringLiteral("web is down");
  job.timeLimitMs = kLimit;
  for (const auto& [properties, reason] : std::vector<std::pair<QString, QString>>{
           {QString(), QString()},
           {QStringLiteral("refuse"), QStringLiteral("web is down")},
           {QStringLiteral("crash"), QStringLiteral("The module moody.dll crashed (SIGABRT).")}}) {
    job.properties = properties;
    std::optional<AlertOutcome> outcome;
    sender.Send(job, [&](const AlertOutcome& result) { outcome = result; });
    ASSERT_TRUE(Until([&] { return outcome.has_value(); }));
    EXPECT_EQ(outcome->delivered, reason.isEmpty());
    EXPECT_EQ(outcome->reason, reason);
  }
}

}  // namespace
}  // namespace quarl::service
