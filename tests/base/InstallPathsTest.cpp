#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "base/Error.h"
#include "base/InstallPaths.h"

namespace quarl {
namespace {

/// An empty file, with its folders.
void MakeFile(const QTemporaryDir& base, const char* name) {
  const QFileInfo file(base.filePath(QString::fromLatin1(name)));
  ASSERT_TRUE(QDir().mkpath(file.path()) && QFile(file.filePath()).open(QIODevice::WriteOnly));
}

TEST(InstallPathsTest, ResolvesBackslashesAndCaseBelowTheBaseFolder) {
  QTemporaryDir base;
  for (const char* name : {"plugins/tests/Ping.dll", "plugins/twin/a.dll", "plugins/twin/A.dll"}) MakeFile(base, name);
  const std::pair<const char*, const char*> rows[] = {
      {"\\plugins\\Tests\\ping.dll", "/plugins/tests/Ping.dll"},
      {"\\plugins\\tests\\Ping.dll", "/plugins/tests/Ping.dll"},
      {"/plugins//tests/PING.DLL", "/plugins/tests/Ping.dll"},
      {"\\plugins\\tests\\missing.dll", "/plugins/tests/missing.dll"},
      {"\\Plugins\\Twin\\A.dll", "/plugins/twin/A.dll"},  // an exact name wins over its twin
      {"\\plugins\\nowhere\\x.dll", "/plugins/nowhere/x.dll"},
  };
  for (const auto& [text, native] : rows) {
    EXPECT_EQ(InstallPaths::Resolve(base.path() + QString::fromLatin1(text)).toStdString(),
              (base.path() + QString::fromLatin1(native)).toStdString())
        << text;
  }
}

TEST(InstallPathsTest, AnAmbiguousNameIsLeftAsWritten) {
  QTemporaryDir base;
  for (const char* name : {"ab", "aB"}) ASSERT_TRUE(QDir(base.path()).mkdir(QString::fromLatin1(name)));
  EXPECT_EQ(InstallPaths::Resolve(base.path() + QStringLiteral("\\AB")), base.path() + QStringLiteral("/AB"));
}

TEST(InstallPathsTest, FormsAModulePathAsItsCallSiteSpellsIt) {
  using Site = ModuleCallSite;
  const struct {
    Site site;
    const char *test, *alert;
  } rows[] = {
      {Site::About, "\\plugins\\tests\\", "\\plugins\\alerts\\"},
      {Site::BufferSize, "\\plugins\\Tests\\", "\\plugins\\Alerts\\"},
      {Site::Properties, "\\plugins\\tests\\", "\\plugins\\Alerts\\"},
      {Site::AlertTest, nullptr, "\\plugins\\Alerts\\"},
      {Site::Picture, "\\plugins\\tests\\", "\\plugins\\Alerts\\"},
  };
  QTemporaryDir base;
  for (const char* name : {"plugins/tests/x..y.dll", "plugins/alerts/x..y.dll"}) MakeFile(base, name);
  for (const auto& row : rows) {
    for (const auto kind : {ModuleKind::Test, ModuleKind::Alert}) {
      const char* folder = kind == ModuleKind::Test ? row.test : row.alert;
      if (folder == nullptr) continue;
      const QString path = InstallPaths::ModulePath(base.path(), row.site, kind, QStringLiteral("x..y.dll"));
      EXPECT_EQ(path.toStdString(), base.path().toStdString() + folder + "x..y.dll");
      EXPECT_TRUE(QFile::exists(InstallPaths::Resolve(path)));
    }
  }
}

TEST(InstallPathsTest, RefusesAModuleThatIsNoFileName) {
  for (const char* name : {"", ".", "..", "../x.dll", "..\\x.dll", "a/b.dll", "/x.dll", "\\x.dll"}) {
    EXPECT_THROW(InstallPaths::ModulePath(QStringLiteral("/q"), ModuleCallSite::About, ModuleKind::Test,
                                          QString::fromLatin1(name)),
                 Error)
        << name;
  }
  EXPECT_THROW(InstallPaths::ModulePath(QStringLiteral("/q"), ModuleCallSite::About, ModuleKind::Test,
                                        QStringLiteral("x.dll") + QChar(u'\0') + u'y'),
               Error);
}

}  // namespace
}  // namespace quarl
