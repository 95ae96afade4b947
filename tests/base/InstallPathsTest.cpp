#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "base/InstallPaths.h"

namespace quarl {
namespace {

TEST(InstallPathsTest, ResolvesBackslashesAndCaseBelowTheBaseFolder) {
  QTemporaryDir base;
  ASSERT_TRUE(QDir(base.path()).mkpath(QStringLiteral("plugins/tests")));
  ASSERT_TRUE(QDir(base.path()).mkpath(QStringLiteral("plugins/twin")));
  for (const char* name : {"plugins/tests/Ping.dll", "plugins/twin/a.dll", "plugins/twin/A.dll"}) {
    QFile file(base.filePath(QString::fromLatin1(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }
  const struct {
    const char* text;
    const char* native;
  } rows[] = {
      {"\\plugins\\Tests\\ping.dll", "/plugins/tests/Ping.dll"},
      {"\\plugins\\tests\\Ping.dll", "/plugins/tests/Ping.dll"},
      {"/plugins//tests/PING.DLL", "/plugins/tests/Ping.dll"},
      {"\\plugins\\tests\\missing.dll", "/plugins/tests/missing.dll"},
      {"\\Plugins\\Twin\\A.dll", "/plugins/twin/A.dll"},  // an exact name wins over its twin
      {"\\plugins\\nowhere\\x.dll", "/plugins/nowhere/x.dll"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(InstallPaths::Resolve(base.path() + QString::fromLatin1(row.text)).toStdString(),
              (base.path() + QString::fromLatin1(row.native)).toStdString())
        << row.text;
  }
}

TEST(InstallPathsTest, AnAmbiguousNameIsLeftAsWritten) {
  QTemporaryDir base;
  for (const char* name : {"ab", "aB"}) ASSERT_TRUE(QDir(base.path()).mkdir(QString::fromLatin1(name)));
  EXPECT_EQ(InstallPaths::Resolve(base.path() + QStringLiteral("\\AB")), base.path() + QStringLiteral("/AB"));
}

}  // namespace
}  // namespace quarl
