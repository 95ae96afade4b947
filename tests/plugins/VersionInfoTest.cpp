#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>

#include "plugins/ModuleBuilder.h"
#include "plugins/contract/CFileVersionInfo.h"

namespace quarl::plugins {
namespace {

using build::Fixed;
using build::UsualVersion;
using build::VersionNode;

class VersionInfoTest : public testing::Test {
 protected:
  QString Write(const QByteArray& bytes, const char* name = "module.dll") {
    const QString path = folder_.filePath(QString::fromLatin1(name));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path;
  }
  QString Write(const VersionNode& node) { return Write(build::File(ModuleFormat::Elf64, {build::Version(node)})); }
  void Read(const Fixed& fixed) { info_.SetFullPathName(Write(UsualVersion(fixed))); }

  QTemporaryDir folder_;
  CFileVersionInfo info_;
};

TEST_F(VersionInfoTest, ReadsEveryFormatOfFile) {
  for (const auto format : {ModuleFormat::Pe32, ModuleFormat::Pe32Plus, ModuleFormat::Elf32, ModuleFormat::Elf64}) {
    CFileVersionInfo info;
    info.SetFullPathName(Write(build::File(format, {build::Icon(), build::Version(UsualVersion())})));
    EXPECT_TRUE(info.Available());
    EXPECT_EQ(info.CompanyName(), QStringLiteral("Acme"));
    EXPECT_EQ(info.ProductName(), QStringLiteral("Widget"));
    EXPECT_EQ(info.Language(), QStringLiteral("English (United States)"));
    EXPECT_EQ(info.FileType(), QStringLiteral("DLL"));
    EXPECT_EQ(info.FileOS(), QStringLiteral("NT-Win32"));
    EXPECT_EQ(info.VerStructure(), QStringLiteral("1.0"));
  }
}

TEST_F(VersionInfoTest, JoinsVersionWords) {
  const struct {
    quint32 ms, ls;
    const char* text;
  } rows[] = {
      {0x00010002, 0x00030004, "1.02.0304"},   {0x00050001, 0x0a280000, "5.01.260000"},
      {0x00010002, 0x00000004, "1.02.0004"},   {0x00000000, 0x00000000, "0.00.0000"},
      {0x000c0022, 0x00003039, "12.34.12345"}, {0xffffffff, 0xffffffff, "65535.65535.6553565535"},
      {0x00010064, 0x00010000, "1.100.0100"},
  };
  for (const auto& row : rows) {
    Fixed fixed;
    fixed.fileMs = row.ms;
    fixed.fileLs = row.ls;
    Read(fixed);
    EXPECT_EQ(info_.VerFile().toStdString(), row.text);
    EXPECT_EQ(info_.VerProduct(), QStringLiteral("5.01.260000"));
  }
}

TEST_F(VersionInfoTest, NamesFlagsAndSystems) {
  const struct {
    quint32 flags;
    const char* text;
  } flags[] = {{0, ""},
               {1, "Debug"},
               {3, "Debug PreRel"},
               {0x24, "Patched Special"},
               {0xffffffc0, ""},
               {0x18, "Private Info"},
               {0x3f, "Debug PreRel Patched Private Info Special"}};
  for (const auto& row : flags) {
    Fixed fixed;
    fixed.flags = row.flags;
    Read(fixed);
    EXPECT_EQ(info_.FileFlags().toStdString(), row.text);
  }
  const struct {
    quint32 os;
    const char* text;
  } systems[] = {{0x00010001, "DOS-Win16"},     {0x00010004, "DOS-Win32"},
                 {0x00020002, "OS/2-16 PM-16"}, {0x00030003, "OS/2-16 PM-32"},
                 {0x00040004, "NT-Win32"},      {0x00040001, "Unknown"},
                 {0x00040000, "Unknown"},       {0, "Unknown"}};
  for (const auto& row : systems) {
    Fixed fixed;
    fixed.os = row.os;
    Read(fixed);
    EXPECT_EQ(info_.FileOS().toStdString(), row.text) << row.os;
  }
}

TEST_F(VersionInfoTest, NamesTypesAndLeavesASubtypeWithoutTextStanding) {
  const struct {
    quint32 type, subtype;
    const char *typeText, *subtypeText;
  } rows[] = {
      {2, 5, "DLL", ""},
      {3, 0, "Driver", "Unknown"},
      {3, 1, "Driver", "Printer drv"},
      {3, 10, "Driver", "Comm drv"},
      {3, 11, "Driver", "Comm drv"},
      {4, 0, "Font", "Comm drv"},
      {4, 3, "Font", "TrueType Font"},
      {4, 4, "Font", "TrueType Font"},
      {1, 1, "Application", "TrueType Font"},
      {5, 0, "VxD", "TrueType Font"},
      {6, 0, "Unknown", "TrueType Font"},
      {7, 0, "Lib", "TrueType Font"},
      {8, 2, "Unknown", "TrueType Font"},
      {3, 8, "Driver", "Installable"},
      {0, 0, "Unknown", "Installable"},
      {0xffffffff, 1, "Unknown", "Installable"},
  };
  for (const auto& row : rows) {
    Fixed fixed;
    fixed.type = row.type;
    fixed.subtype = row.subtype;
    Read(fixed);
    EXPECT_EQ(info_.FileType().toStdString(), row.typeText);
    EXPECT_EQ(info_.FileSubType().toStdString(), row.subtypeText) << row.type << '/' << row.subtype;
  }
}

VersionNode& Table(VersionNode& root) {
  return root.Child(QStringLiteral("StringFileInfo")).children.front();
}
VersionNode& Company(VersionNode& root) {
  return Table(root).children.front();
}
QByteArray& TranslationOf(VersionNode& root) {
  return root.Child(QStringLiteral("VarFileInfo")).Child(QStringLiteral("Translation")).value;
}

struct OddBlock {
  const char* name;
  std::function<void(VersionNode&)> change;
  const char *file, *company, *product, *language;
};

const OddBlock kOddBlocks[] = {
    {"usual", [](VersionNode&) {}, "1.02.0304", "Acme", "Widget", "English (United States)"},
    {"no translation", [](VersionNode& n) { n.children.pop_back(); }, "1.02.0304", "", "", ""},
    {"empty translation", [](VersionNode& n) { TranslationOf(n).clear(); }, "1.02.0304", "", "", ""},
    {"short translation", [](VersionNode& n) { TranslationOf(n).chop(2); }, "1.02.0304", "", "", ""},
    {"only English under another translation", [](VersionNode& n) { TranslationOf(n) = build::Words({0x04b00407}); },
     "1.02.0304", "Acme", "Widget", "German (Germany)"},
    {"first of two translations",
     [](VersionNode& n) {
       TranslationOf(n) = build::Words({0x04b00409, 0x04b00407});
     },
     "1.02.0304", "Acme", "Widget", "English (United States)"},
    {"unknown language", [](VersionNode& n) { TranslationOf(n) = build::Words({0x04b07777}); }, "1.02.0304", "Acme",
     "Widget", ""},
    {"other code page", [](VersionNode& n) { TranslationOf(n) = build::Words({0x04e40409}); }, "1.02.0304", "", "",
     "English (United States)"},
    {"no company keeps the first table", [](VersionNode& n) { Company(n).key = QStringLiteral("Nobody"); }, "1.02.0304",
     "", "Widget", "English (United States)"},
    {"no company in the translated table",
     [](VersionNode& n) {
       VersionNode german = Table(n);
       german.key = QStringLiteral("040704B0");
       german.children = {german.children.back()};
       german.children.front().value = build::TextBytes(QStringLiteral("Ding"));
       n.children.front().children.push_back(german);
       TranslationOf(n) = build::Words({0x04b00407});
     },
     "1.02.0304", "Acme", "Widget", "German (Germany)"},
    {"lower-case keys",
     [](VersionNode& n) {
       Table(n).key = QStringLiteral("040904b0");
       Company(n).key = QStringLiteral("companyname");
     },
     "1.02.0304", "Acme", "Widget", "English (United States)"},
    {"length in bytes", [](VersionNode& n) { Company(n).valueLength = 10; }, "1.02.0304", "Acme", "Widget",
     "English (United States)"},
    {"length 0", [](VersionNode& n) { Company(n).valueLength = 0; }, "1.02.0304", "", "Widget",
     "English (United States)"},
    {"no NUL at the end", [](VersionNode& n) { Company(n).value.chop(2); }, "1.02.0304", "Acme", "Widget",
     "English (United States)"},
    {"NUL inside", [](VersionNode& n) { Company(n).value = build::TextBytes(QStringLiteral("Ac") + QChar(0) + u'x'); },
     "1.02.0304", "Ac", "Widget", "English (United States)"},
    {"beyond Latin", [](VersionNode& n) { Company(n).value = build::TextBytes(QStringLiteral("Ж株😀")); }, "1.02.0304",
     "Ж株😀", "Widget", "English (United States)"},
    {"lone surrogate", [](VersionNode& n) { Company(n).value = build::TextBytes(QChar(0xd800) + QStringLiteral("a")); },
     "1.02.0304", "?a", "Widget", "English (United States)"},
    {"no fixed part", [](VersionNode& n) { n.value.clear(); }, "", "Acme", "Widget", "English (United States)"},
    {"fixed part of 48 bytes", [](VersionNode& n) { n.value.chop(4); }, "", "Acme", "Widget",
     "English (United States)"},
};

TEST_F(VersionInfoTest, ReadsOddBlocks) {
  for (const OddBlock& row : kOddBlocks) {
    VersionNode node = UsualVersion();
    row.change(node);
    CFileVersionInfo info;
    info.SetFullPathName(Write(node));
    EXPECT_TRUE(info.Available()) << row.name;
    EXPECT_EQ(info.VerFile().toStdString(), row.file) << row.name;
    EXPECT_EQ(info.CompanyName().toStdString(), row.company) << row.name;
    EXPECT_EQ(info.ProductName().toStdString(), row.product) << row.name;
    EXPECT_EQ(info.Language().toStdString(), row.language) << row.name;
  }
}

TEST_F(VersionInfoTest, TakesTheResourceWithId1InThePreferredLanguage) {
  const auto named = [](const char* company) {
    VersionNode node = UsualVersion();
    Company(node).value = build::TextBytes(QString::fromLatin1(company));
    return node;
  };
  const struct {
    std::vector<build::Resource> resources;
    const char* company;
  } rows[] = {
      {{build::Version(named("two"), 2)}, ""},
      {{build::Version(named("one"), 1, 0x407), build::Version(named("two"), 2)}, "one"},
      {{build::Version(named("english"), 1, 0x409), build::Version(named("german"), 1, 0x407)}, "english"},
      {{build::Version(named("english"), 1, 0x409), build::Version(named("neutral"), 1, 0)}, "neutral"},
      {{build::Version(named("french"), 1, 0x40c), build::Version(named("german"), 1, 0x407)}, "german"},
  };
  for (const auto& row : rows) {
    CFileVersionInfo info;
    info.SetFullPathName(Write(build::File(ModuleFormat::Pe32, row.resources)));
    EXPECT_EQ(info.CompanyName().toStdString(), row.company);
    EXPECT_EQ(info.Available(), *row.company != 0);
  }
}

TEST_F(VersionInfoTest, AFileWithoutVersionLeavesTheLastOneStanding) {
  const QString none = Write(build::File(ModuleFormat::Elf64, {build::Icon()}), "none.dll");
  info_.SetFullPathName(none);
  EXPECT_FALSE(info_.Available());
  EXPECT_EQ(info_.FullPathName(), none);
  const QString full = Write(UsualVersion());
  info_.SetFullPathName(full);
  for (const QString& other : {none, folder_.filePath(QStringLiteral("missing.dll")), folder_.path()}) {
    info_.SetFullPathName(other);
    EXPECT_EQ(info_.FullPathName(), other);
    EXPECT_TRUE(info_.Available());
    EXPECT_EQ(info_.CompanyName(), QStringLiteral("Acme"));
  }
  for (const QString& noPath : {QString(), QStringLiteral("a") + QChar(0) + u'b'}) {
    info_.SetFullPathName(noPath);
    EXPECT_EQ(info_.FullPathName(), folder_.path());
  }
}

TEST_F(VersionInfoTest, NamesTheFileByItsAbsoluteNativePath) {
  const QString path = Write(UsualVersion());
  info_.SetFullPathName(folder_.path() + QStringLiteral("\\MODULE.DLL"));
  EXPECT_EQ(info_.FullPathName(), path);
  EXPECT_EQ(info_.ProductName(), QStringLiteral("Widget"));
  const QString before = QDir::currentPath();
  QDir::setCurrent(folder_.path());
  CFileVersionInfo relative;
  relative.SetFullPathName(QStringLiteral("./module.dll"));
  QDir::setCurrent(before);
  EXPECT_EQ(QFileInfo(relative.FullPathName()).canonicalFilePath(), QFileInfo(path).canonicalFilePath());
  EXPECT_TRUE(relative.Available());
}

TEST_F(VersionInfoTest, ListsThePredefinedRows) {
  const struct {
    const char *name, *key;
  } rows[] = {{"Comments", "Comments"},
              {"Company Name", "CompanyName"},
              {"File Description", "FileDescription"},
              {"File Version", "FileVersion"},
              {"Internal Name", "InternalName"},
              {"Legal Copyright", "LegalCopyright"},
              {"Legal Trademarks", "LegalTrademarks"},
              {"Original Filename", "OriginalFilename"},
              {"Product Name", "ProductName"},
              {"Product Version", "ProductVersion"},
              {"Private Build", "PrivateBuild"},
              {"Special Build", "SpecialBuild"},
              {"LegalTrademarks1", "LegalTrademarks1"},
              {"LegalTrademarks2", "LegalTrademarks2"}};
  VersionNode node = UsualVersion();
  Table(node).children.clear();
  for (const auto& row : rows) {
    const QString key = QString::fromLatin1(row.key);
    Table(node).children.push_back({key, build::TextBytes(u'<' + key + u'>'), true, -1, {}});
  }
  info_.SetFullPathName(Write(node));
  qint32 index = 1;
  for (const auto& row : rows) {
    EXPECT_EQ(CFileVersionInfo::PredefinedName(index).toStdString(), row.name);
    EXPECT_EQ(info_.PredefinedValue(index).toStdString(), std::string("<") + row.key + ">");
    ++index;
  }
  EXPECT_EQ(CFileVersionInfo::PredefinedName(0), QStringLiteral("Language"));
  EXPECT_EQ(info_.PredefinedValue(0), QStringLiteral("English (United States)"));
  for (const qint32 outside : {-1, 15, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()}) {
    EXPECT_EQ(CFileVersionInfo::PredefinedName(outside), QString());
    EXPECT_EQ(info_.PredefinedValue(outside), QString());
  }
  EXPECT_EQ(info_.SpecialBuild(), QStringLiteral("<SpecialBuild>"));
}

}  // namespace
}  // namespace quarl::plugins
