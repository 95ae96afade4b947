#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <vector>

#include "service/daemon/DaemonRig.h"

namespace quarl {
namespace {

using test::DaemonRig;
using test::Delivered;

/// How often the service is killed; 1,000 by hand.
int Rounds() {
  const int rounds = qEnvironmentVariableIntValue("QUARL_KILL_ROUNDS");
  return rounds > 0 ? rounds : 200;
}

int ChangesInLog(DaemonRig& rig) {
  int changes = 0;
  for (auto rows = rig.Stores().Log().GetLogs(); !rows.Eof(); rows.MoveNext()) {
    const QString line = rows.Value("LogDescription").toString();
    changes += line.contains(QStringLiteral("(server failed)")) || line.contains(QStringLiteral("(server recovered)"));
  }
  return changes;
}

TEST(KillTest, NoAlarmIsLostAndEachDeathRepeatsItOnceAtMost) {
  DaemonRig rig;
  std::vector<std::size_t> deaths;  // how many messages had come by then; one that was on its way may follow
  const auto kill = [&] {
    rig.Kill();
    deaths.push_back(rig.Messages().size());
  };
  ASSERT_TRUE(rig.Stores().Service().SetLogRetention(1'000'000));
  QRandomGenerator random(4711);  // the same course each time, as far as the machine allows
  bool passed = true;
  int interrupted = 0;
  for (int round = 0; round < Rounds(); ++round) {
    ASSERT_TRUE(rig.Start()) << "round " << round << ": " << rig.Process().readAll().toStdString();
    passed = !passed;
    rig.Answer(passed);
    QElapsedTimer elapsed;
    elapsed.start();
    const int lifetime = random.bounded(300);
    const bool done = rig.Check([&] {
      if (elapsed.elapsed() >= lifetime) kill();
    });
    if (!done) ++interrupted;
    kill();
    // What the console writes meanwhile stays.
    const QString name = QStringLiteral("web %1").arg(round);
    ASSERT_TRUE(rig.Stores().Tests().RenameTest(rig.idTest, name));
    ASSERT_EQ(rig.Stores().Tests().GetTestsByServer(rig.idServer).Value("TestName").toString(), name);
  }
  EXPECT_GT(interrupted, Rounds() / 20) << "too few kills fell into a check to say anything";

  ASSERT_TRUE(rig.Start());
  ASSERT_TRUE(rig.Check());
  const int changes = ChangesInLog(rig);
  EXPECT_GT(changes, Rounds() / 4);
  EXPECT_TRUE(rig.WaitForMessages(static_cast<std::size_t>(changes)));
  EXPECT_EQ(rig.Stop(), 0);
  std::map<QString, std::vector<std::size_t>> copies;
  std::map<QString, std::set<QString>> outages;
  const std::vector<Delivered> messages = rig.Messages();
  for (std::size_t at = 0; at < messages.size(); ++at) {
    copies[messages[at].message].push_back(at);
    outages[messages[at].outage].insert(messages[at].message);
  }
  EXPECT_EQ(copies.size(), static_cast<std::size_t>(changes)) << "each change is one message";
  EXPECT_LT(messages.size() - copies.size(), copies.size() / 4) << "what was delivered is written down";
  std::size_t more = 0;  // came more than twice, which takes two deaths just behind a delivery
  for (const auto& [message, places] : copies) {
    more += places.size() > 2 ? 1 : 0;
    for (std::size_t copy = 1; copy < places.size(); ++copy) {
      const auto death = std::lower_bound(deaths.begin(), deaths.end(), places[copy - 1]);
      EXPECT_TRUE(death != deaths.end() && *death <= places[copy]) << message.toStdString() << " came again, unasked";
    }
  }
  EXPECT_LE(more, 1 + copies.size() / 100);
  std::printf("%zu messages, %zu copies, %zu of more than two\n", copies.size(), messages.size(), more);
  for (const auto& [outage, each] : outages) EXPECT_LE(each.size(), 2U) << outage.toStdString();
}

}  // namespace
}  // namespace quarl
