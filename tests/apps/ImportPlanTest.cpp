#include <gtest/gtest.h>

#include "apps/NastyConfiguration.h"
#include "transfer/ConfigurationDiff.h"
#include "transfer/ConfigurationMerge.h"
#include "transfer/TransferError.h"

namespace quarl::transfer {
namespace {

const QString kHere = QStringLiteral("11111111-1111-4111-8111-111111111111");
const QString kElsewhere = QStringLiteral("22222222-2222-4222-8222-222222222222");

ConfigurationFile FileOf(const char* body, const QString& storeId) {
  const QString id = storeId.isEmpty() ? QString() : QStringLiteral("\"storeId\":\"%1\",").arg(storeId);
  return ReadConfiguration(QStringLiteral("{\"format\":\"quarl-configuration\",\"version\":1,%1%2}")
                               .arg(id, QString::fromUtf8(body))
                               .toUtf8());
}

/// One group "Web" (id 2) with the server "a" (id 3) that has a ping test (5) and the mail alerts 7 and 8; the server
/// "b" (id 4) stands in the root group with a test 6 and a schedule.
const char* const kStore = R"(
  "testTypes":[{"id":1,"name":"Ping","module":"ping.dll"},{"id":2,"name":"Web","module":"http.dll"}],
  "alertTypes":[{"id":1,"name":"Mail","module":"mail.dll"}],
  "root":{"servers":[{"id":4,"name":"b","ipAddress":"10.0.0.4","failThreshold":2,
    "schedule":{"enabled":true,"startDate":"2026-01-01","startTime":"00:00:00","deltaTime":1,"deltaType":"days"},
    "tests":[{"id":6,"type":2,"name":"Web","properties":"u"}],"alerts":[]}],"alerts":[]},
  "groups":[{"id":2,"name":"Web","description":"d","servers":[{"id":3,"name":"a","ipAddress":"10.0.0.3",
    "tests":[{"id":5,"type":1,"name":"Ping","properties":"p"}],
    "alerts":[{"id":7,"type":1,"name":"Mail","properties":""},{"id":8,"type":1,"name":"Night","properties":""}]}],
    "alerts":[]}])";

struct ImportCase {
  const char* name;
  const char* file;
  std::vector<const char*> lines;  ///< what changes, in order; a single line that begins with "!" is a refusal
  QString storeId = kHere;
};

void ExpectPlan(const ImportCase& each, ImportMode mode) {
  SCOPED_TRACE(each.name);
  const store::ConfigurationSnapshot target{FileOf(kStore, kHere).configuration, kHere, 1};
  QStringList lines;
  try {
    const auto after = PlanImport(FileOf(each.file, each.storeId), target, mode);
    lines = CompareConfigurations(target.configuration, after).lines;
  } catch (const TransferError& error) {
    lines = {QLatin1Char('!') + error.Description()};
  }
  QStringList expected;
  for (const char* line : each.lines) expected << QString::fromUtf8(line);
  EXPECT_EQ(lines.join(QLatin1Char('\n')).toStdString(), expected.join(QLatin1Char('\n')).toStdString());
}

const ImportCase kMerges[] = {
    {"TheSame", kStore, {}},
    {"Nothing", R"("groups":[])", {}},
    {"ByHandNewServer",
     R"("root":{"servers":[{"name":"c","ipAddress":"::1","tests":[{"type":"ping.dll","name":"P"}]}]})",
     {R"(add server "c": address "::1", in root group)", R"(add test "P": type "Ping", of server "c")"},
     QString()},
    {"ByHandNewType",
     R"("groups":[{"name":"New","servers":[{"name":"c","ipAddress":"","tests":[{"type":"tcp.dll","name":"T"}]}]}])",
     {R"(add test type 3 "tcp": module "tcp.dll")", R"(add group "New")", R"(add server "c": in group "New")",
      R"(add test "T": type "tcp", of server "c")"},
     QString()},
    {"ChangedValues",
     R"("testTypes":[{"id":1,"name":"Echo","module":"ping.dll"}],
        "root":{"schedule":{"enabled":false,"startDate":"2026-01-01","startTime":"10:00:00","deltaTime":5,"deltaType":0}},
        "groups":[{"id":2,"name":"W\n2","description":"d","servers":[{"id":3,"name":"a","ipAddress":"10.0.0.9",
          "failThreshold":9,"tests":[{"id":5,"type":1,"name":"Ping","properties":"secret"}]}]}])",
     {R"(change test type 1 "Echo": name "Ping" -> "Echo")",
      "change root group: schedule none -> every 5 of unit 0 from 2026-01-01 10:00:00 (off)",
      R"(change group 2 "W\n2": name "Web" -> "W\n2")",
      R"(change server 3 "a": address "10.0.0.3" -> "10.0.0.9", failure threshold none -> 9)",
      R"(change test 5 "Ping": properties)"}},
    {"MovedServerKeepsWhatItHas",
     R"("groups":[{"id":2,"name":"Web","description":"d","servers":[{"id":4,"name":"b","ipAddress":"10.0.0.4"}]}])",
     {R"(change server 4 "b": in root group -> group 2 "Web")"}},
    {"MovedIntoANewGroup",
     R"("groups":[{"name":"New","servers":[{"id":3,"name":"a","ipAddress":"10.0.0.3"}]}])",
     {R"(add group "New")", R"(change server 3 "a": in group 2 "Web" -> group "New")"}},
    {"MovedAlert",
     R"("alertTypes":[{"id":1,"name":"Mail","module":"mail.dll"}],
        "root":{"alerts":[{"id":7,"type":1,"name":"Mail","properties":""}]})",
     {R"(change alert 7 "Mail": of server 3 "a" -> root group)"}},
    {"RemovedSinceComesBack",
     R"("root":{"servers":[{"id":9,"name":"old","ipAddress":"1.1.1.1"}]})",
     {R"(add server 9 "old": address "1.1.1.1", in root group)"}},
    {"SameModuleUnderAnotherId",
     R"("testTypes":[{"id":2,"name":"Ping","module":"ping.dll"}],"root":{"servers":[{"name":"c","ipAddress":"",
          "tests":[{"type":2,"name":"P"}]}]})",
     {R"(add server "c": in root group)", R"(add test "P": type "Ping", of server "c")"}},
    {"TypeIdTakenByAnotherModule",
     R"("testTypes":[{"id":2,"name":"TCP","module":"tcp.dll"}])",
     {R"(add test type 3 "TCP": module "tcp.dll")"}},
    {"OtherStore", kStore, {"!The file is of another store, so its ids mean other records here."}, kElsewhere},
    {"GroupHereServerThere",
     R"("root":{"servers":[{"id":2,"name":"x","ipAddress":""}]})",
     {"!The id 2 is a server in the file and a group in the store."}},
    {"ServerHereGroupThere",
     R"("groups":[{"id":3,"name":"x","description":""}])",
     {"!The id 3 is a group in the file and a server in the store."}},
};
TEST(ImportPlan, MergesExactlyThis) {
  for (const ImportCase& each : kMerges) ExpectPlan(each, ImportMode::Merge);
}

const ImportCase kReplacements[] = {
    {"TheSame", kStore, {}},
    {"TheSameOfAnotherStore", kStore, {}, kElsewhere},
    {"ReorderedAlerts",
     R"("testTypes":[{"id":1,"name":"Ping","module":"ping.dll"},{"id":2,"name":"Web","module":"http.dll"}],
        "alertTypes":[{"id":1,"name":"Mail","module":"mail.dll"}],
        "groups":[{"id":2,"name":"Web","description":"d","servers":[{"id":3,"name":"a","ipAddress":"10.0.0.3",
          "tests":[{"id":5,"type":1,"name":"Ping","properties":"p"}],
          "alerts":[{"id":8,"type":1,"name":"Night","properties":""},{"id":7,"type":1,"name":"Mail","properties":""}]}]}])",
     {R"(change server 3 "a": order of alerts)",
      R"(remove server 4 "b": address "10.0.0.4", in root group, failure threshold 2, )"
      R"(schedule every 1 days from 2026-01-01 00:00:00)",
      R"(remove test 6 "Web": type "Web", of server 4 "b")"}},
    {"OnlyAServerByHand",
     R"("root":{"servers":[{"name":"c","ipAddress":"1.1.1.1","tests":[{"type":"http.dll","name":"H"}]}]})",
     {R"(add server "c": address "1.1.1.1", in root group)", R"(add test "H": type "Web", of server "c")",
      R"(remove test type 1 "Ping": module "ping.dll")", R"(remove alert type 1 "Mail": module "mail.dll")",
      R"(remove group 2 "Web": description "d")",
      R"(remove server 4 "b": address "10.0.0.4", in root group, failure threshold 2, )"
      R"(schedule every 1 days from 2026-01-01 00:00:00)",
      R"(remove server 3 "a": address "10.0.0.3", in group 2 "Web")",
      R"(remove test 6 "Web": type "Web", of server 4 "b")", R"(remove test 5 "Ping": type "Ping", of server 3 "a")",
      R"(remove alert 7 "Mail": type "Mail", of server 3 "a")",
      R"(remove alert 8 "Night": type "Mail", of server 3 "a")"},
     QString()},
};
TEST(ImportPlan, ReplacesExactlyThis) {
  for (const ImportCase& each : kReplacements) ExpectPlan(each, ImportMode::Replace);
}

TEST(ImportPlanOfAnEmptyStore, IsExactlyTheFileOfAnotherStore) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const ConfigurationFile file{test::NastyConfiguration(seed), kElsewhere};
    const store::ConfigurationSnapshot empty{{}, kHere, 1};
    EXPECT_TRUE(PlanImport(file, empty, ImportMode::Merge) == file.configuration);
    EXPECT_TRUE(PlanImport(file, empty, ImportMode::Replace) == file.configuration);
  }
}

TEST(ImportPlanOfANewType, FindsAFreeIdWhenTheLargestIsTaken) {
  store::ConfigurationSnapshot target{{}, kHere, 1};
  target.configuration.testTypes = {{1, QStringLiteral("Ping"), QStringLiteral("ping.dll")},
                                    {2147483647, QStringLiteral("Web"), QStringLiteral("http.dll")}};
  const auto after = PlanImport(FileOf(R"("testTypes":[{"module":"tcp.dll"}])", QString()), target, ImportMode::Merge);
  ASSERT_EQ(after.testTypes.size(), 3U);
  EXPECT_EQ(after.testTypes.back().id, 2);
}

}  // namespace
}  // namespace quarl::transfer
