#include <dlfcn.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include "plugins/contract/CFileVersionInfo.h"
#include "plugins/contract/ModuleFile.h"
#include "quarl_module.h"

namespace quarl::plugins {
namespace {

struct Module {
  const char* path;
  const char* product;
  int kind = QUARL_MODULE_TEST;
  const char *company = "Quarl", *version = QUARL_MODULE_VERSION_TEXT;
};

const Module kModules[] = {
    {QUARL_LAYOUT_DIR "/plugins/tests/ping.dll", "Ping"},
    {QUARL_LAYOUT_DIR "/plugins/tests/tcpport.dll", "TCP port"},
    {QUARL_LAYOUT_DIR "/plugins/tests/http.dll", "HTTP(S)"},
    {QUARL_LAYOUT_DIR "/plugins/tests/monitoringplugin.dll", "Monitoring-Plugins command"},
    {QUARL_LAYOUT_DIR "/plugins/tests/dns.dll", "DNS look-up"},
    {QUARL_LAYOUT_DIR "/plugins/tests/local.dll", "Local machine"},
    {QUARL_LAYOUT_DIR "/plugins/alerts/email.dll", "E-mail", QUARL_MODULE_ALERT},
    {QUARL_LAYOUT_DIR "/plugins/alerts/webhook.dll", "Webhook", QUARL_MODULE_ALERT},
    {QUARL_LAYOUT_DIR "/plugins/alerts/command.dll", "Command", QUARL_MODULE_ALERT},
    {QUARL_LAYOUT_DIR "/plugins/alerts/desktop.dll", "Desktop note", QUARL_MODULE_ALERT},
    {QUARL_LAYOUT_DIR "/plugins/alerts/syslog.dll", "System log", QUARL_MODULE_ALERT},
    {QUARL_EXAMPLE_DIR "/example.dll", "Example", QUARL_MODULE_TEST, "Example authors", "1.2.3"},
    {QUARL_KIT_DIR "/kit_c.dll", "Kit in C \"quoted\"", QUARL_MODULE_ALERT, "Müller & Söhne; 株式会社", "12.34.56.78"},
    {QUARL_KIT_DIR "/kit_cxx.dll", "Kit in C++", QUARL_MODULE_TEST, "", "2"},
};

QString FileNameOf(const Module& module) {
  return QFileInfo(QString::fromUtf8(module.path)).fileName();
}

/// Pixels of the picture that are neither transparent nor white.
int ColouredPixels(const ModuleBitmap& icon) {
  int count = 0;
  for (qsizetype at = icon.pixelOffset; at + 4 <= icon.bytes.size(); at += 4) {
    const quint32 pixel = qFromLittleEndian<quint32>(icon.bytes.data() + at);
    count += pixel >> 24 > 0x80 && (pixel & 0xffffff) != 0xffffff ? 1 : 0;
  }
  return count;
}

void ExpectWhole(const Module& module, const QString& path) {
  SCOPED_TRACE(path.toStdString());
  ASSERT_EQ(InspectModule(path).toStdString(), "");
  CFileVersionInfo info;
  info.SetFullPathName(path);
  EXPECT_EQ(info.ProductName().toStdString(), module.product);
  EXPECT_EQ(info.CompanyName().toStdString(), module.company);
  EXPECT_EQ(info.ProductVersion().toStdString(), module.version);
  EXPECT_EQ(info.OriginalFilename(), FileNameOf(module));
  EXPECT_EQ(info.FileType(), QStringLiteral("DLL"));
  const ModuleFile file = ModuleFile::Open(path);
  const ModuleBitmap icon = file.Icon();
  EXPECT_EQ(icon.width, 48);
  EXPECT_EQ(icon.height, 48);
  EXPECT_EQ(icon.bitCount, 32);
  EXPECT_GT(ColouredPixels(icon), 48 * 48 / 20);
  EXPECT_EQ(icon.bytes.at(icon.pixelOffset + 3), 0) << "the corner is transparent";
}

TEST(BundledModuleTest, EachHasNameAuthorVersionAndPicture) {
  for (const Module& module : kModules) ExpectWhole(module, QString::fromUtf8(module.path));
}

TEST(BundledModuleTest, ResourcesSurviveStrip) {
  QTemporaryDir folder;
  for (const Module& module : kModules) {
    const QString path = folder.filePath(FileNameOf(module));
    QProcess strip;
    strip.start(QStringLiteral("strip"),
                {QStringLiteral("--strip-unneeded"), QStringLiteral("-o"), path, QString::fromUtf8(module.path)});
    ASSERT_TRUE(strip.waitForFinished() && strip.exitCode() == 0) << strip.readAllStandardError().toStdString();
    ExpectWhole(module, path);
  }
}

TEST(BundledModuleTest, EachSaysItsKindAndOffersNoCalls) {
  for (const Module& module : kModules) {
    void* library = ::dlopen(module.path, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    const auto call = [&](const char* name) {
      auto* const function = reinterpret_cast<int16_t (*)()>(::dlsym(library, name));
      EXPECT_NE(function, nullptr) << module.path << ": " << name;
      return function == nullptr ? -1 : function();
    };
    EXPECT_EQ(call("QuarlModuleAbi"), QUARL_MODULE_ABI);
    EXPECT_EQ(call("QuarlModuleKind"), module.kind) << module.path;
    EXPECT_EQ(::dlsym(library, "Check"), nullptr);
    ::dlclose(library);
  }
}

TEST(BundledModuleTest, VersionsReadAsTheManagerShowsThem) {
  CFileVersionInfo info;
  info.SetFullPathName(QString::fromUtf8(QUARL_KIT_DIR "/kit_c.dll"));
  EXPECT_EQ(info.VerProduct(), QStringLiteral("12.34.5678"));
  EXPECT_EQ(info.VerFile(), QStringLiteral("12.34.5678"));
  EXPECT_EQ(info.LegalCopyright(), QStringLiteral("© somebody"));
  info.SetFullPathName(QString::fromUtf8(QUARL_KIT_DIR "/kit_cxx.dll"));
  EXPECT_EQ(info.VerProduct(), QStringLiteral("2.00.0000"));
}

TEST(BundledModuleTest, TheKitRefusesBadInput) {
  QTemporaryDir folder;
  const QString output = folder.filePath(QStringLiteral("out.s"));
  const QString icon = QString::fromUtf8(QUARL_KIT_ICON);
  const std::tuple<const char*, QString, int> rows[] = {
      {"--product", QStringLiteral("Good"), 0},
      {"--product", QString(), 2},
      {"--colour", QStringLiteral("red"), 2},
      {"--version", QStringLiteral("1.2.3.4.5"), 2},
      {"--version", QStringLiteral("1..2"), 2},
      {"--version", QStringLiteral("1.65536"), 2},
      {"--version", QStringLiteral("1.2-beta"), 2},
      {"--icon", folder.filePath(QStringLiteral("missing.png")), 1},
      {"--icon", QStringLiteral(QUARL_SOURCE_DIR "/modules/tests/ping/icon.svg"), 1},
      {"--product", QString(40000, u'x'), 1},
      {"--output", folder.filePath(QStringLiteral("no/folder/out.s")), 1},
  };
  for (const auto& [change, value, code] : rows) {
    QFile::remove(output);
    QStringList arguments = {QStringLiteral("--output"),  output,
                             QStringLiteral("--icon"),    icon,
                             QStringLiteral("--file"),    QStringLiteral("x.dll"),
                             QStringLiteral("--product"), QStringLiteral("X"),
                             QStringLiteral("--version"), QStringLiteral("1.0")};
    arguments += {QString::fromLatin1(change), value};
    QProcess tool;
    tool.start(QStringLiteral(QUARL_RESCOMPILE), arguments);
    ASSERT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.exitCode(), code) << change << ' ' << value.left(40).toStdString();
    EXPECT_EQ(QFile::exists(output), code == 0) << change;
    EXPECT_EQ(tool.readAllStandardError().isEmpty(), code == 0);
  }
}

}  // namespace
}  // namespace quarl::plugins
