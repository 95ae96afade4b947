// Installing plug-in modules, and the service's state.
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <limits>

#include "control/ServiceControl.h"
#include "store/StoreFixture.h"

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
  const QString ping = folder_.Write(QStringLiteral("from/Ping.v2.dll"), "MODULE ping");
  ASSERT_TRUE(AddTest(ping, "Ping test"));
  EXPECT_EQ(BytesOf(folder_.Paths().ModuleFolder(ModuleKind::Test) + QStringLiteral("/Ping.v2.dll")),
            QByteArray("MODULE ping"));
  const QString present = folder_.Write(QStringLiteral("app/plugins/tests/Http.v2.dll"), "MODULE http");
  ASSERT_TRUE(AddTest(present, "  "));
  EXPECT_EQ(Types("TestType"), QStringLiteral("Ping test Http.v2"));
  EXPECT_EQ(Types("Module"), QStringLiteral("Ping.v2.dll Http.v2.dll"));
  EXPECT_EQ(Installed().size(), 2);
  // Test and alert modules are different folders and different lists.
  EXPECT_TRUE(stores_.System().AddAlertType(ping, {}));
  EXPECT_EQ(Column(stores_.System().GetAlertTypes(), "IDAlertType"), QStringLiteral("1"));
}

TEST_F(TypesTest, WhatIsNotAcceptedChangesNothing) {
  const QString good = folder_.Write(QStringLiteral("from/Good.dll"), "MODULE good");
  ASSERT_TRUE(AddTest(good, "Good"));
  folder_.Write(QStringLiteral("app/plugins/tests/Taken.dll"), "MODULE taken");
  folder_.Write(QStringLiteral("app/plugins/tests/CASE.dll"), "MODULE one");
  ASSERT_EQ(::mkfifo(QFile::encodeName(folder_.Path(QStringLiteral("from/pipe.dll"))).constData(), 0600), 0);
  const QString refused[] = {
      QString(),
      folder_.Path(QStringLiteral("from/missing.dll")),
      folder_.Path(QStringLiteral("from")),
      folder_.Path(QStringLiteral("from/pipe.dll")),
      folder_.Write(QStringLiteral("from/empty.dll"), {}),
      folder_.Write(QStringLiteral("from/text.dll"), "no module"),
      folder_.Write(QStringLiteral("from/Taken.dll"), "MODULE other"),
      folder_.Write(QStringLiteral("from/case.dll"), "MODULE two"),
      folder_.Write(QStringLiteral("from/back\\slash.dll"), "MODULE x"),
      good,
      folder_.Write(QStringLiteral("again/GOOD.dll"), "MODULE good"),
      folder_.Path(QStringLiteral("from/")) + QString(300, u'n'),
      good + QChar(0) + QStringLiteral("x"),
  };
  const QStringList before = Installed();
  const qint64 revision = stores_.Configurations().Read().revision;
  for (const QString& module : refused) {
    EXPECT_FALSE(AddTest(module)) << module.toStdString();
    EXPECT_EQ(Installed(), before) << module.toStdString();
  }
  EXPECT_EQ(Types("Module"), QStringLiteral("Good.dll"));
  EXPECT_EQ(stores_.Configurations().Read().revision, revision);
  EXPECT_EQ(BytesOf(folder_.Path(QStringLiteral("app/plugins/tests/Taken.dll"))), QByteArray("MODULE taken"));
}

TEST_F(TypesTest, ACopyIsRemovedWhenTheTypeCannotBeRecorded) {
  stores_.Open();
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 2147483647 WHERE name = 'test_types'");
  EXPECT_FALSE(AddTest(folder_.Write(QStringLiteral("from/A.dll"), "MODULE")));
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 0; DROP TABLE test_types");
  EXPECT_THROW(AddTest(folder_.Write(QStringLiteral("from/A.dll"), "MODULE")), StoreError);
  EXPECT_TRUE(Installed().isEmpty());
}

TEST_F(TypesTest, AModuleFolderThatCannotBeWrittenIsAnErrorThatNamesIt) {
  folder_.Write(QStringLiteral("app/plugins"), "a file where the folder should be");
  const QString module = folder_.Write(QStringLiteral("from/A.dll"), "MODULE");
  EXPECT_TRUE(ErrorOf([&] { AddTest(module); }).contains(folder_.Path(QStringLiteral("app/plugins/tests"))));
  EXPECT_EQ(Types("Module"), QString());
}

TEST_F(TypesTest, TheBytesThatAreInstalledAreTheOnesThatWereInspected) {
  const QString module = folder_.Write(QStringLiteral("from/A.dll"), "MODULE first");
  SqlSetup setup = folder_.Setup();
  int looks = 0;
  int exchangedAfter = 1;
  setup.inspector = [&](const QString& path) {
    const QString fault = BytesOf(path).startsWith("MODULE") ? QString() : QStringLiteral("no");
    // By somebody, behind our back.
    if (++looks == exchangedAfter) folder_.Write(QStringLiteral("from/A.dll"), "exchanged");
    return fault;
  };
  SqlStores stores(setup);
  EXPECT_FALSE(stores.System().AddTestType(module, {})) << "exchanged before it was copied";
  EXPECT_EQ(Installed(), QStringList());
  folder_.Write(QStringLiteral("from/A.dll"), "MODULE first");
  looks = 0;
  exchangedAfter = 2;
  ASSERT_TRUE(stores.System().AddTestType(module, {})) << "exchanged after it was copied";
  EXPECT_EQ(BytesOf(folder_.Path(QStringLiteral("app/plugins/tests/A.dll"))), QByteArray("MODULE first"));
}

TEST_F(TypesTest, OthersWriteWhileAModuleIsInspected) {
  SqlStores other(folder_.Setup());
  SqlSetup setup = folder_.Setup();
  setup.inspector = [&](const QString& path) {
    EXPECT_GT(other.Groups().AddGroup(QStringLiteral("meanwhile"), {}), 0) << path.toStdString();
    return QString();
  };
  SqlStores stores(setup);
  ASSERT_TRUE(stores.System().AddTestType(folder_.Write(QStringLiteral("from/A.dll"), "MODULE"), {}));
}

TEST_F(TypesTest, AModuleThatSomebodyElseBroughtMeanwhileIsKept) {
  SqlSetup setup = folder_.Setup();
  setup.inspector = [&](const QString&) {
    folder_.Write(QStringLiteral("app/plugins/tests/a.DLL"), "MODULE of another");
    return QString();
  };
  SqlStores stores(setup);
  EXPECT_FALSE(stores.System().AddTestType(folder_.Write(QStringLiteral("from/A.dll"), "MODULE"), {}));
  EXPECT_EQ(Installed(), QStringList{QStringLiteral("a.DLL")});
}

TEST_F(TypesTest, IdsEndAtTheirLimitAndAreNotGivenTwice) {
  constexpr qint32 kLast = std::numeric_limits<qint32>::max();
  const qint32 type = folder_.AddTestType(stores_, QStringLiteral("Ping"));
  const qint32 alertType = folder_.AddAlertType(stores_, QStringLiteral("Mail"));
  RunSql(folder_.StorePath(), "UPDATE sequences SET last_id = 2147483646");
  ASSERT_EQ(stores_.Servers().AddServer(QStringLiteral("s"), {}, 0), kLast);
  ASSERT_EQ(stores_.Tests().AddTest(kLast, type, {}), kLast);
  ASSERT_EQ(stores_.Alerts().AddServerAlert(kLast, alertType, {}), kLast);
  EXPECT_EQ(Column(stores_.Tests().GetTestsByServer(kLast), "IDTest"), QString::number(kLast));
  EXPECT_EQ(Column(stores_.Alerts().GetAlertsByServer(kLast), "IDAlert"), QString::number(kLast));
  for (int i = 0; i < 2; ++i) {
    EXPECT_LT(stores_.Servers().AddServer(QStringLiteral("s"), {}, 0), 1);
    EXPECT_LT(stores_.Groups().AddGroup(QStringLiteral("g"), {}), 1);
    EXPECT_LT(stores_.Tests().AddTest(kLast, type, {}), 1);
    EXPECT_LT(stores_.Alerts().AddGroupAlert(0, alertType, {}), 1);
    EXPECT_TRUE(stores_.Servers().RemoveServer(kLast) || i == 1);  // makes no room
  }
}

TEST_F(TypesTest, TheServicesStateComesFromItsControl) {
  struct Service : control::ServiceControl {
    control::ServiceState State() override { return state; }
    bool Start() override {
      state = control::ServiceState::StartPending;
      return true;
    }
    bool Stop() override { return false; }
    control::ServiceState state = control::ServiceState::Stopped;
  } service;
  SqlSetup setup = folder_.Setup(StoreLocation::File(QStringLiteral("/nowhere/quarl.db")));
  setup.service = &service;
  SqlStores stores(setup);  // the service is reached without the store
  EXPECT_EQ(stores.System().GetServiceState(), 1);
  EXPECT_TRUE(stores.System().StartService());
  EXPECT_EQ(stores.System().GetServiceState(), 2);
  EXPECT_FALSE(stores.System().StopService());
}

}  // namespace
}  // namespace quarl::store
