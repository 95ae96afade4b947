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
    Read({.fileMs = row.ms, .fileLs = row.ls});
    EXPECT_EQ(info_.VerFile().toStdString(), row.text);
    EXPECT_EQ(info_.VerProduct(), QStringLiteral("5.01.260000"));
    EXPECT_EQ(info_.VerStructure(), QStringLiteral("1.0"));
  }
}

TEST_F(VersionInfoTest, NamesFlagsAndSystems) {
  const std::pair<quint32, const char*> flags[] = {{0, ""},
                                                   {1, "Debug"},
                                                   {3, "Debug PreRel"},
                                                   {0x24, "Patched Special"},
                                                   {0xffffffc0, ""},
                                                   {0x18, "Private Info"},
                                                   {0x3f, "Debug PreRel Patched Private Info Special"}};
  for (const auto& [bits, text] : flags) {
    Read({.flags = bits});
    EXPECT_EQ(info_.FileFlags().toStdString(), text);
  }
  const std::pair<quint32, const char*> systems[] = {
      {0x00030003, "OS/2-16 PM-32"}, {0x00040004, "NT-Win32"}, {0x00040001, "Unknown"}, {0, "Unknown"}};
  for (const auto& [os, text] : systems) {
    Read({.os = os});
    EXPECT_EQ(info_.FileOS().toStdString(), text) << os;
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
    Read({.type = row.type, .subtype = row.subtype});
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

/// What is read; where nothing is said, what is read of the usual record.
struct Values {
  const char *file = "1.02.0304", *company = "Acme", *product = "Widget", *language = "English (United States)";
};

struct OddBlock {
  const char* name;
  Values read;
  std::function<void(VersionNode&)> change;
};

const Values kUsual, kNothing{.company = "", .product = "", .language = ""}, kGerman{.language = "German (Germany)"},
    kNoLanguage{.language = ""}, kNoTexts{.company = "", .product = ""}, kNoCompany{.company = ""};

const OddBlock kOddBlocks[] = {
    {"usual", kUsual, [](VersionNode&) {}},
    {"no translation", kNothing, [](VersionNode& n) { n.children.pop_back(); }},
    {"empty translation", kNothing, [](VersionNode& n) { TranslationOf(n).clear(); }},
    {"short translation", kNothing, [](VersionNode& n) { TranslationOf(n).chop(2); }},
    {"only English under another translation", kGerman,
     [](VersionNode& n) { TranslationOf(n) = build::Words({0x04b00407}); }},
    {"first of two translations", kUsual,
     [](VersionNode& n) {
       TranslationOf(n) = build::Words({0x04b00409, 0x04b00407});
     }},
    {"unknown language", kNoLanguage, [](VersionNode& n) { TranslationOf(n) = build::Words({0x04b07777}); }},
    {"other code page", kNoTexts, [](VersionNode& n) { TranslationOf(n) = build::Words({0x04e40409}); }},
    {"no company keeps the first table", kNoCompany, [](VersionNode& n) { Company(n).key = QStringLiteral("Nobody"); }},
    {"no company in the translated table", kGerman,
     [](VersionNode& n) {
       VersionNode german = Table(n);
       german.key = QStringLiteral("040704B0");
       german.children = {german.children.back()};
       german.children.front().value = build::TextBytes(QStringLiteral("Ding"));
       n.children.front().children.push_back(german);
       TranslationOf(n) = build::Words({0x04b00407});
     }},
    {"lower-case keys", kUsual,
     [](VersionNode& n) {
       Table(n).key = QStringLiteral("040904b0");
       Company(n).key = QStringLiteral("companyname");
     }},
    {"length in bytes", kUsual, [](VersionNode& n) { Company(n).valueLength = 10; }},
    {"length 0", kNoCompany, [](VersionNode& n) { Company(n).valueLength = 0; }},
    {"no NUL at the end", kUsual, [](VersionNode& n) { Company(n).value.chop(2); }},
    {"NUL inside", Values{.company = "Ac"},
     [](VersionNode& n) { Company(n).value = build::TextBytes(QStringLiteral("Ac") + QChar(0) + u'x'); }},
    {"beyond Latin", Values{.company = "Ж株😀"},
     [](VersionNode& n) { Company(n).value = build::TextBytes(QStringLiteral("Ж株😀")); }},
    {"lone surrogate", Values{.company = "?a"},
     [](VersionNode& n) { Company(n).value = build::TextBytes(QChar(0xd800) + QStringLiteral("a")); }},
    {"no fixed part", Values{.file = ""}, [](VersionNode& n) { n.value.clear(); }},
    {"fixed part of 48 bytes", Values{.file = ""}, [](VersionNode& n) { n.value.chop(4); }},
};

TEST_F(VersionInfoTest, ReadsOddBlocks) {
  for (const OddBlock& row : kOddBlocks) {
    VersionNode node = UsualVersion();
    row.change(node);
    CFileVersionInfo info;
    info.SetFullPathName(Write(node));
    EXPECT_TRUE(info.Available()) << row.name;
    EXPECT_EQ(info.VerFile().toStdString(), row.read.file) << row.name;
    EXPECT_EQ(info.CompanyName().toStdString(), row.read.company) << row.name;
    EXPECT_EQ(info.ProductName().toStdString(), row.read.product) << row.name;
    EXPECT_EQ(info.Language().toStdString(), row.read.language) << row.name;
  }
}

TEST_F(VersionInfoTest, TakesTheResourceWithId1InThePreferredLanguage) {
  const auto named = [](const char* company) {
    VersionNode node = UsualVersion();
    Company(node).value = build::TextBytes(QString::fromLatin1(company));
    return node;
  };
  const std::pair<std::vector<build::Resource>, const char*> rows[] = {
      {{build::Version(named("two"), 2)}, ""},
      {{build::Version(named("one"), 1, 0x407), build::Version(named("two"), 2)}, "one"},
      {{build::Version(named("english"), 1, 0x409), build::Version(named("german"), 1, 0x407)}, "english"},
      {{build::Version(named("english"), 1, 0x409), build::Version(named("neutral"), 1, 0)}, "neutral"},
      {{build::Version(named("french"), 1, 0x40c), build::Version(named("german"), 1, 0x407)}, "german"},
  };
  for (const auto& [resources, company] : rows) {
    CFileVersionInfo info;
    info.SetFullPathName(Write(build::File(ModuleFormat::Pe32, resources)));
    EXPECT_EQ(info.CompanyName().toStdString(), company);
    EXPECT_EQ(info.Available(), *company != 0);
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
  // Each is the key of its value, with spaces.
  const QStringList names = QStringLiteral(
                                "Comments,Company Name,File Description,File Version,Internal Name,"
                                "Legal Copyright,Legal Trademarks,Original Filename,Product Name,Product Version,"
                                "Private Build,Special Build,LegalTrademarks1,LegalTrademarks2")
                                .split(u',');
  const auto keyOf = [](QString name) { return name.remove(u' '); };
  VersionNode node = UsualVersion();
  Table(node).children.clear();
  for (const QString& name : names) {
    Table(node).children.push_back({keyOf(name), build::TextBytes(u'<' + name + u'>'), true, -1, {}});
  }
  info_.SetFullPathName(Write(node));
  qint32 index = 1;
  for (const QString& name : names) {
    EXPECT_EQ(CFileVersionInfo::PredefinedName(index), name);
    EXPECT_EQ(info_.PredefinedValue(index++), u'<' + name + u'>');
  }
  EXPECT_EQ(CFileVersionInfo::PredefinedName(0), QStringLiteral("Language"));
  EXPECT_EQ(info_.PredefinedValue(0), QStringLiteral("English (United States)"));
  for (const qint32 outside : {-1, 15, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()}) {
    EXPECT_EQ(CFileVersionInfo::PredefinedName(outside), QString());
    EXPECT_EQ(info_.PredefinedValue(outside), QString());
  }
  EXPECT_EQ(info_.SpecialBuild(), QStringLiteral("<Special Build>"));
}

}  // namespace
}  // namespace quarl::plugins
