// Installing plug-in modules, and the service's state.
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <limits>

#include "store/StoreFixture.h"
#include "support/SteppedService.h"

namespace quarl::store {
namespace {

class TypesTest : public ::testing::Test {
 protected:
  bool AddTest(const QString& module, const char* product = "") {
    return stores_.System().AddTestType(module, QString::fromLatin1(product));
  }
  QStringList Installed() const {
    return QDir(folder_.Paths().ModuleFolder(ModuleKind::Test)).entryList(QDir::Files | QDir::Hidden);
  }
  QString Types(const char* field) { return Column(stores_.System().GetTestTypes(), field); }

  StoreFolder folder_;
  SqlStores stores_{folder_.Setup()};
};

TEST_F(TypesTest, AModuleIsCopiedOnceAndRecordedUnderItsProductOrBaseName) {
  const QString ping = folder_.Write(Q("from/Ping.v2.dll"), "MODULE ping");
  ASSERT_TRUE(AddTest(ping, "Ping test"));
  EXPECT_EQ(BytesOf(folder_.Paths().ModuleFolder(ModuleKind::Test) + Q("/Ping.v2.dll")), QByteArray("MODULE ping"));
  const QString present = folder_.Write(Q("app/plugins/tests/Http.v2.dll"), "MODULE http");
  ASSERT_TRUE(AddTest(present, "  "));
  EXPECT_EQ(Types("TestType"), Q("Ping test Http.v2"));
  EXPECT_EQ(Types("Module"), Q("Ping.v2.dll Http.v2.dll"));
  EXPECT_EQ(Installed().size(), 2);
  // Test and alert modules are different folders and different lists.
  EXPECT_TRUE(stores_.System().AddAlertType(ping, {}));
  EXPECT_EQ(Column(stores_.System().GetAlertTypes(), "IDAlertType"), Q("1"));
}

TEST_F(TypesTest, WhatIsNotAcceptedChangesNothing) {
  const QString good = folder_.Write(Q("from/Good.dll"), "MODULE good");
  ASSERT_TRUE(AddTest(good, "Good"));
  folder_.Write(Q("app/plugins/tests/Taken.dll"), "MODULE taken");
  folder_.Write(Q("app/plugins/tests/CASE.dll"), "MODULE one");
  ASSERT_EQ(::mkfifo(QFile::encodeName(folder_.Path(Q("from/pipe.dll"))).constData(), 0600), 0);
  const QString refused[] = {QString(),
                             folder_.Path(Q("from/missing.dll")),
                             folder_.Path(Q("from")),
                             folder_.Path(Q("from/pipe.dll")),
                             folder_.Write(Q("from/empty.dll"), {}),
                             folder_.Write(Q("from/text.dll"), "no module"),
                             folder_.Write(Q("from/Taken.dll"), "MODULE other"),
                             folder_.Write(Q("from/case.dll"), "MODULE two"),
                             folder_.Write(Q("from/back\\slash.dll"), "MODULE x"),
                             good,
                             folder_.Write(Q("again/GOOD.dll"), "MODULE good"),
                             folder_.Path(Q("from/")) + QString(300, u'n'),
                             good + QChar(0) + Q("x")};
  const QStringList before = Installed();
  const qint64 revision = stores_.Configurations().Read().revision;
  for (const QString& module : refused) {
    EXPECT_FALSE(AddTest(module)) << module.toStdString();
    EXPECT_EQ(Installed(), before) << module.toStdString();
  }
  EXPECT_EQ(Types("Module"), Q("Good.dll"));
  EXPECT_EQ(stores_.Configurations().Read().revision, revision);
  EXPECT_EQ(BytesOf(folder_.Path(Q("app/plugins/tests/Taken.dll"))), QByteArray("MODULE taken"));
}

TEST_F(TypesTest, ACopyIsRemovedWhenTheTypeCannotBeRecorded) {
  stores_.Open();
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 2147483647 WHERE name = 'test_types'");
  EXPECT_FALSE(AddTest(folder_.Write(Q("from/A.dll"), "MODULE")));
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 0; DROP TABLE test_types");
  EXPECT_THROW(AddTest(folder_.Write(Q("from/A.dll"), "MODULE")), StoreError);
  EXPECT_TRUE(Installed().isEmpty());
}

TEST_F(TypesTest, AModuleFolderThatCannotBeWrittenIsAnErrorThatNamesIt) {
  folder_.Write(Q("app/plugins"), "a file where the folder should be");
  const QString module = folder_.Write(Q("from/A.dll"), "MODULE");
  EXPECT_TRUE(ErrorOf([&] { AddTest(module); }).contains(folder_.Path(Q("app/plugins/tests"))));
  EXPECT_EQ(Types("Module"), QString());
}

TEST_F(TypesTest, TheBytesThatAreInstalledAreTheOnesThatWereInspected) {
  const QString module = folder_.Write(Q("from/A.dll"), "MODULE first");
  SqlSetup setup = folder_.Setup();
  int looks = 0;
  int exchangedAfter = 1;
  setup.inspector = [&](const QString& path) {
    const QString fault = BytesOf(path).startsWith("MODULE") ? QString() : Q("no");
    // By somebody, behind our back.
    if (++looks == exchangedAfter) folder_.Write(Q("from/A.dll"), "exchanged");
    return fault;
  };
  SqlStores stores(setup);
  EXPECT_FALSE(stores.System().AddTestType(module, {})) << "exchanged before it was copied";
  EXPECT_EQ(Installed(), QStringList());
  folder_.Write(Q("from/A.dll"), "MODULE first");
  looks = 0;
  exchangedAfter = 2;
  ASSERT_TRUE(stores.System().AddTestType(module, {})) << "exchanged after it was copied";
  EXPECT_EQ(BytesOf(folder_.Path(Q("app/plugins/tests/A.dll"))), QByteArray("MODULE first"));
}

TEST_F(TypesTest, OthersWriteWhileAModuleIsInspected) {
  SqlStores other(folder_.Setup());
  SqlSetup setup = folder_.Setup();
  setup.inspector = [&](const QString& path) {
    EXPECT_GT(other.Groups().AddGroup(Q("meanwhile"), {}), 0) << path.toStdString();
    return QString();
  };
  SqlStores stores(setup);
  ASSERT_TRUE(stores.System().AddTestType(folder_.Write(Q("from/A.dll"), "MODULE"), {}));
}

TEST_F(TypesTest, AModuleThatSomebodyElseBroughtMeanwhileIsKept) {
  SqlSetup setup = folder_.Setup();
  setup.inspector = [&](const QString&) {
    folder_.Write(Q("app/plugins/tests/a.DLL"), "MODULE of another");
    return QString();
  };
  SqlStores stores(setup);
  EXPECT_FALSE(stores.System().AddTestType(folder_.Write(Q("from/A.dll"), "MODULE"), {}));
  EXPECT_EQ(Installed(), QStringList{Q("a.DLL")});
}

TEST_F(TypesTest, IdsEndAtTheirLimitAndAreNotGivenTwice) {
  constexpr qint32 kLast = std::numeric_limits<qint32>::max();
  const qint32 type = folder_.AddTestType(stores_, Q("Ping"));
  const qint32 alertType = folder_.AddAlertType(stores_, Q("Mail"));
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 2147483646");
  ASSERT_EQ(stores_.Servers().AddServer(Q("s"), {}, 0), kLast);
  ASSERT_EQ(stores_.Tests().AddTest(kLast, type, {}), kLast);
  ASSERT_EQ(stores_.Alerts().AddServerAlert(kLast, alertType, {}), kLast);
  EXPECT_EQ(Column(stores_.Tests().GetTestsByServer(kLast), "IDTest"), QString::number(kLast));
  EXPECT_EQ(Column(stores_.Alerts().GetAlertsByServer(kLast), "IDAlert"), QString::number(kLast));
  for (int i = 0; i < 2; ++i) {
    EXPECT_LT(stores_.Servers().AddServer(Q("s"), {}, 0), 1);
    EXPECT_LT(stores_.Groups().AddGroup(Q("g"), {}), 1);
    EXPECT_LT(stores_.Tests().AddTest(kLast, type, {}), 1);
    EXPECT_LT(stores_.Alerts().AddGroupAlert(0, alertType, {}), 1);
    EXPECT_TRUE(stores_.Servers().RemoveServer(kLast) || i == 1);  // makes no room
  }
}

TEST_F(TypesTest, TheServicesStateComesFromItsControl) {
  quarl::testing::SteppedService service;
  service.state = control::ServiceState::Stopped;
  SqlSetup setup = folder_.Setup();
  setup.service = &service;
  SqlStores stores(setup);
  EXPECT_EQ(stores.System().GetServiceState(), 1);
  EXPECT_TRUE(stores.System().StartService());
  EXPECT_EQ(service.starts, 1);
  EXPECT_EQ(service.stops, 0);
  service.state = control::ServiceState::StartPending;
  EXPECT_EQ(stores.System().GetServiceState(), 2);
  service.refuses = true;
  EXPECT_FALSE(stores.System().StopService());

  setup.location = StoreLocation::File(folder_.Path(Q("missing/quarl.db")));
  SqlStores unreachable(setup);
  EXPECT_THROW(std::ignore = unreachable.System().GetServiceState(), StoreError);
}

struct BeatCase {
  control::ServiceState here;
  qint16 there;
  qint64 ageMs;
  qint16 seen;
};

TEST_F(TypesTest, AServiceOnAnotherMachineIsSeenByItsSignsOfLife) {
  using control::ServiceState;
  quarl::testing::SteppedService service;
  SqlSetup setup = folder_.Setup();
  setup.service = &service;
  SqlStores stores(setup);
  ServiceInstance other{.id = Q("other"),
                        .process = {.host = Q("far"), .machine = Q("m"), .boot = Q("b"), .scope = Q("s"), .pid = 1}};
  for (const BeatCase& each : {BeatCase{ServiceState::NotInstalled, 4, 0, 4},
                               {ServiceState::Stopped, 2, kBeatFreshMs, 2},
                               {ServiceState::Stopped, 3, 0, 3},
                               {ServiceState::Stopped, 4, kBeatFreshMs + 1, 1},
                               {ServiceState::NotInstalled, 4, -kBeatFreshMs - 1, -1},
                               {ServiceState::Running, 3, 0, 4},
                               {ServiceState::StartPending, 4, 0, 2}}) {
    service.state = each.here;
    other.beatMs = folder_.clock.now - each.ageMs;
    other.state = each.there;
    ASSERT_FALSE(stores.Service().Claim(other, 0));
    EXPECT_EQ(stores.System().GetServiceState(), each.seen) << each.there << ' ' << each.ageMs;
  }
}

}  // namespace
}  // namespace quarl::store
