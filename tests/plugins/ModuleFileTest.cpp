#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include "plugins/ModuleBuilder.h"
#include "plugins/contract/CFileVersionInfo.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::plugins {
namespace {

constexpr ModuleFormat kFormats[] = {ModuleFormat::Pe32, ModuleFormat::Pe32Plus, ModuleFormat::Elf32,
                                     ModuleFormat::Elf64};

QByteArray Patched(QByteArray bytes, qsizetype offset, quint32 value) {
  qToLittleEndian(value, bytes.data() + offset);
  return bytes;
}

void Write(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write(bytes), bytes.size());
}

TEST(ModuleFileTest, TakesAWholeModuleOfEveryFormat) {
  for (const ModuleFormat format : kFormats) {
    const QByteArray bytes = build::File(format, {build::Icon(), build::Version(build::UsualVersion())});
    EXPECT_EQ(InspectModuleBytes(bytes), QString());
    const ModuleFile file = ModuleFile::FromBytes(bytes);
    EXPECT_EQ(file.Format(), format);
    EXPECT_EQ(file.Icon().bytes, build::SmallBitmap());
    EXPECT_EQ(file.VersionBlock(), build::UsualVersion().Bytes());
  }
}

TEST(ModuleFileTest, RefusesNamesThatAreNoReadableFile) {
  QTemporaryDir folder;
  const auto path = [&](const char* name) { return folder.filePath(QString::fromLatin1(name)); };
  Write(path("empty.dll"), {});
  Write(path("text.dll"), "This is no module.\n");
  Write(path("short.dll"), "MZ");
  Write(path("elf.dll"), QByteArray("\x7f") + "ELF\2\1");
  ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.dll")).constData(), 0600), 0);
  ASSERT_EQ(::truncate(QFile::encodeName(path("empty.dll")).constData(), 0), 0);
  Write(path("huge.dll"), {});
  ASSERT_EQ(::truncate(QFile::encodeName(path("huge.dll")).constData(), kLargestModule + 1), 0);
  ASSERT_TRUE(QFile::link(path("loop.dll"), path("loop.dll")));
  const std::pair<QString, const char*> rows[] = {{QString(), "no file name"},
                                                  {path("missing.dll"), "cannot be read"},
                                                  {path("missing.dll/x"), "cannot be read"},
                                                  {path("loop.dll"), "cannot be read"},
                                                  {folder.path(), "folder"},
                                                  {path("pipe.dll"), "no ordinary file"},
                                                  {path("empty.dll"), "is empty"},
                                                  {path("text.dll"), "neither"},
                                                  {path("short.dll"), "cut short"},
                                                  {path("elf.dll"), "cut short"},
                                                  {path("huge.dll"), "larger than the 128 MiB"},
                                                  {QStringLiteral("/proc/self/exe"), "program, not a library"}};
  for (const auto& [name, part] : rows) {
    const QString answer = InspectModule(name);
    EXPECT_TRUE(answer.contains(QString::fromLatin1(part))) << name.toStdString() << ": " << answer.toStdString();
    EXPECT_TRUE(answer.endsWith(u'.') && answer.count(u'\n') == 0) << answer.toStdString();
  }
}

TEST(ModuleFileTest, AnUnreadableFileIsSaidToBeSo) {
  QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("closed.dll"));
  Write(path, build::File(ModuleFormat::Elf64, {build::Icon()}));
  ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
  ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0);
  // In a process of its own, which gives up the administrator's right to read everything.
  const auto inspect = [&] {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0 && ::seteuid(kNobody) != 0) ::_exit(2);
    ::_exit(InspectModule(path).startsWith(QStringLiteral("The file cannot be read: Permission")) ? 0 : 1);
  };
  EXPECT_EXIT(inspect(), testing::ExitedWithCode(0), "");
}

TEST(ModuleFileTest, RefusesFilesThatAreNoWholeLibrary) {
  const QByteArray pe = build::File(ModuleFormat::Pe32, {build::Icon()});
  const QByteArray elf = build::File(ModuleFormat::Elf64, {build::Icon()});
  const std::tuple<const char*, QByteArray, const char*> rows[] = {
      {"PE program", Patched(pe, 0x40 + 20, 0x000200e0), "program, not a library"},
      {"PE cut in its section", pe.chopped(1), "section 1 ends at byte"},
      {"PE cut in its headers", pe.left(0x1f0), "cut short"},
      {"PE of an unknown form", Patched(pe, 0x40 + 24, 0x0107), "unknown form"},
      {"PE header outside", Patched(pe, 0x3c, 0xfffffff0), "no PE header"},
      {"PE without resources", Patched(pe, 0x40 + 24 + 92, 2), "no picture"},
      {"PE resources outside", Patched(pe, 0x40 + 24 + 96 + 16, 0x7000), "outside its sections"},
      {"PE of 65535 sections", Patched(pe, 0x40 + 4, 0xffff014c), "too many sections"},
      {"ELF object", Patched(elf, 16, 0x003e0001), "not a library"},
      {"ELF cut in its section table", elf.chopped(1), "header tables end behind"},
      {"ELF, other byte order", QByteArray(elf).replace(5, 1, "\2"), "other byte order"},
      {"ELF of no class", QByteArray(elf).replace(4, 1, "\3"), "unknown form"},
      {"ELF, segment outside", Patched(elf, 64 + 32, 0x7fffffff), "segment 1 ends behind"},
      {"ELF without dynamic table", Patched(elf, 64, 1), "cannot be loaded"},
      {"ELF, odd entry size", Patched(elf, 0x36, 0x00010039), "odd form"}};
  for (const auto& [name, bytes, part] : rows) {
    const QString answer = InspectModuleBytes(bytes);
    EXPECT_TRUE(answer.contains(QString::fromLatin1(part))) << name << ": " << answer.toStdString();
  }
}

/// A tree whose words are changed after it was built: {offset, value} pairs.
struct HostileTree {
  const char* name;
  std::vector<std::pair<qsizetype, quint32>> words;
  const char* part;
};

// The tree of one icon: root 0 (entry 16), names 24 (entry 40), text 48, languages 64 (entry 80), data entry 88.
const HostileTree kHostileTrees[] = {{"untouched", {}, ""},
                                     {"names are the root", {{20, 0x80000000}}, "no picture"},
                                     {"languages are the root", {{44, 0x80000000}}, "not in order"},
                                     {"language is a directory", {{84, 0x80000018}}, "not in order"},
                                     {"type is data", {{20, 88}}, "not in order"},
                                     {"name is data", {{44, 88}}, "not in order"},
                                     {"131070 types", {{12, 0xffffffff}}, "cut short inside its resources"},
                                     {"no languages", {{76, 0}}, "not in order"},
                                     {"names far outside", {{20, 0xffffffff}}, "cut short inside its resources"},
                                     {"text far outside", {{40, 0xffffffff}}, "cut short inside its resources"},
                                     {"text of 65535 units", {{48, 0x0049ffff}}, "no picture"},
                                     {"data entry outside", {{84, 0x7ffffff0}}, "cut short inside its resources"},
                                     {"data outside", {{88, 0xfffffff0}}, "outside the part"},
                                     {"data too long", {{92, 0xffffffff}}, "outside the part"},
                                     {"data of length 0", {{92, 0}}, "cut short inside its picture"},
                                     {"another name", {{52, 0x004e0100}}, "no picture"}};

TEST(ModuleFileTest, SurvivesHostileTrees) {
  for (const ModuleFormat format : kFormats) {
    const QByteArray tree = build::Tree(format, {build::Icon()});
    for (const HostileTree& row : kHostileTrees) {
      QByteArray bytes = tree;
      for (const auto& [offset, value] : row.words) bytes = Patched(bytes, offset, value);
      const QString answer = InspectModuleBytes(build::FileWithTree(format, bytes));
      EXPECT_TRUE(answer.contains(QString::fromLatin1(row.part)) && answer.isEmpty() == (*row.part == 0))
          << row.name << ": " << answer.toStdString();
    }
    for (qsizetype length = 0; length < tree.size(); ++length) {
      EXPECT_NE(InspectModuleBytes(build::FileWithTree(format, tree.left(length))), QString()) << length;
    }
  }
}

TEST(ModuleFileTest, TheIconIsTheBitmapOfThatNameOnly) {
  const build::Resource icon = build::Icon();
  const std::pair<build::Resource, bool> rows[] = {{icon, true},
                                                   {{2, 0, QStringLiteral("icon"), 0, icon.data}, false},
                                                   {{2, 0, QStringLiteral("ICON2"), 0, icon.data}, false},
                                                   {{2, 0, QStringLiteral("ICO"), 0, icon.data}, false},
                                                   {{2, 1, {}, 0, icon.data}, false},
                                                   {{3, 0, QStringLiteral("ICON"), 0, icon.data}, false},
                                                   {{2, 0, QStringLiteral("ICON"), 0x41f, icon.data}, true}};
  for (const auto& [resource, good] : rows) {
    EXPECT_EQ(InspectModuleBytes(build::File(ModuleFormat::Pe32Plus, {resource})).isEmpty(), good)
        << resource.name.toStdString();
  }
}

TEST(ModuleFileTest, RefusesBitmapsThatCannotBeShown) {
  const QByteArray good = build::SmallBitmap();
  const std::tuple<const char*, QByteArray, const char*> rows[] = {
      {"no header", good.left(3), "cut short"},
      {"header cut", good.left(39), "cut short"},
      {"unknown header", Patched(good, 0, 41), "41 bytes"},
      {"no width", Patched(good, 4, 0), "0 by 2"},
      {"negative width", Patched(good, 4, 0x80000000), "by 2"},
      {"very wide", Patched(good, 4, 0x7fffffff), "2147483647 by 2"},
      {"lowest height", Patched(good, 8, 0x80000000), "2147483648"},
      {"two planes", Patched(good, 12, 0x00180002), "unknown way"},
      {"7 bits", Patched(good, 12, 0x00070001), "unknown way"},
      {"runs of 24 bits", Patched(good, 16, 1), "unknown way"},
      {"pixels cut", good.chopped(1), "cut short"},
      {"palette behind the end", Patched(good, 32, 0xffffffff), "cut short"},
      {"too many colours", Patched(Patched(good, 12, 0x00010001), 32, 3), "more colours"},
      {"masks of nothing", Patched(Patched(good, 12, 0x00200001), 16, 3), "channel masks"}};
  EXPECT_EQ(ModuleBitmap::Check(good).pixelOffset, 40);
  for (const auto& [name, bytes, part] : rows) {
    const QString answer = InspectModuleBytes(build::File(ModuleFormat::Elf32, {build::Icon(bytes)}));
    EXPECT_TRUE(answer.contains(QString::fromLatin1(part))) << name << ": " << answer.toStdString();
  }
}

class ResourceScriptTest : public testing::TestWithParam<const char*> {};

TEST_P(ResourceScriptTest, ReadsWhatTheUsualToolsWrite) {
  const QString prefix = QString::fromLatin1(GetParam());
  if (prefix.contains(QStringLiteral("NOTFOUND"))) GTEST_SKIP() << "needs Debian's binutils-mingw-w64";
  QTemporaryDir folder;
  const auto run = [&](const char* tool, const QStringList& arguments) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(prefix + QString::fromLatin1(tool), arguments);
    EXPECT_TRUE(process.waitForFinished() && process.exitCode() == 0)
        << tool << ": " << process.readAllStandardError().toStdString();
  };
  ASSERT_TRUE(QFile::copy(QStringLiteral(QUARL_SOURCE_DIR "/tests/plugins/fixtures/module.rc"),
                          folder.filePath(QStringLiteral("module.rc"))));
  const QByteArray bitmap = build::SmallBitmap();
  Write(folder.filePath(QStringLiteral("icon.bmp")),
        "BM" + build::Words({quint32(14 + bitmap.size()), 0, 54}) + bitmap);
  run("windres", {QStringLiteral("--preprocessor=cat"), QStringLiteral("module.rc"), QStringLiteral("module.o")});
  run("ld", QStringLiteral("-shared -e 0 -s -o module.dll module.o").split(u' '));
  const QString path = folder.filePath(QStringLiteral("module.dll"));
  EXPECT_EQ(InspectModule(path).toStdString(), "");
  EXPECT_EQ(ModuleFile::Open(path).Icon().bytes, bitmap);
  CFileVersionInfo info;
  info.SetFullPathName(path);
  EXPECT_EQ(info.ProductName(), QStringLiteral("Resource script"));
  EXPECT_EQ(info.VerFile(), QStringLiteral("1.02.0304"));
  EXPECT_EQ(info.VerProduct(), QStringLiteral("5.01.260000"));
}

INSTANTIATE_TEST_SUITE_P(Pe32AndPe32Plus, ResourceScriptTest, testing::Values(QUARL_MINGW_I686, QUARL_MINGW_X86_64));

}  // namespace
}  // namespace quarl::plugins
