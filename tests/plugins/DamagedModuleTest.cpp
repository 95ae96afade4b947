#include <gtest/gtest.h>

#include <QFile>
#include <random>

#include "plugins/ModuleBuilder.h"
#include "plugins/contract/ModuleError.h"
#include "plugins/contract/ModuleFile.h"
#include "plugins/contract/VersionBlock.h"

// Copies of modules that are cut or changed at random, the same ones in every run. The readers answer or refuse; the
// address sanitizer watches them.
namespace quarl::plugins {
namespace {

QByteArray SmallModule() {
  QFile file(QStringLiteral(QUARL_KIT_DIR "/kit_c.dll"));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  return file.readAll();
}

/// Reads all that there is to read. True when the file passes as a module.
bool ReadAll(const QByteArray& bytes) {
  try {
    const ModuleFile file = ModuleFile::FromBytes(bytes);
    const VersionBlock block(file.VersionBlock());
    std::ignore = block.Fixed();
    const Translation translation = block.FirstTranslation().value_or(Translation());
    std::ignore = block.Text(QStringLiteral("%1").arg(translation.language), u"CompanyName");
    std::ignore = block.Text(u"040904B0", u"SpecialBuild");
  } catch (const ModuleError& error) {
    EXPECT_FALSE(error.Description().isEmpty());
  }
  return InspectModuleBytes(bytes).isEmpty();
}

TEST(DamagedModuleTest, NoTruncatedCopyPasses) {
  const QByteArray whole = SmallModule();
  ASSERT_TRUE(ReadAll(whole));
  for (qsizetype length = 0; length < whole.size(); length += 64) {
    // Exactly as long as it says, so that a read behind the end is seen.
    const QByteArray copy(whole.constData(), length);
    EXPECT_FALSE(ReadAll(copy)) << length;
  }
  EXPECT_FALSE(ReadAll(whole.chopped(1)));
}

TEST(DamagedModuleTest, ChangedCopiesAreReadOrRefused) {
  const build::VersionNode version = build::UsualVersion();
  std::vector<QByteArray> seeds = {SmallModule()};
  for (const auto format : {ModuleFormat::Pe32, ModuleFormat::Pe32Plus, ModuleFormat::Elf32, ModuleFormat::Elf64}) {
    seeds.push_back(build::File(format, {build::Icon(), build::Version(version)}));
  }
  constexpr unsigned char kLikely[] = {0, 1, 2, 0x10, 0x7f, 0x80, 0xfe, 0xff};
  std::mt19937 random(20240917);  // NOLINT(cert-msc51-cpp): the same copies in every run
  const auto upTo = [&](size_t end) { return static_cast<size_t>(random() % end); };
  int passed = 0;
  constexpr int kCopies = 6000;
  for (int i = 0; i < kCopies; ++i) {
    QByteArray copy = seeds[upTo(seeds.size())];
    copy.detach();
    for (size_t changes = 1 + upTo(8); changes > 0; --changes) {
      copy[static_cast<qsizetype>(upTo(static_cast<size_t>(copy.size())))] =
          static_cast<char>(kLikely[upTo(std::size(kLikely))]);
    }
    if (upTo(8) == 0) copy.resize(static_cast<qsizetype>(upTo(static_cast<size_t>(copy.size()))));
    passed += ReadAll(copy) ? 1 : 0;
  }
  // Most single bytes of a module mean nothing to the reader, and some mean all.
  EXPECT_GT(passed, kCopies / 20);
  EXPECT_LT(passed, kCopies * 19 / 20);
}

TEST(DamagedModuleTest, ABlockOfManyEmptyBlocksIsReadToItsEndAndNoFurther) {
  const auto blockOf = [](int empty) {
    build::VersionNode root = build::UsualVersion();
    const build::VersionNode nothing;
    root.children.insert(root.children.begin(), static_cast<size_t>(empty), nothing);
    return root.Bytes();
  };
  const QByteArray most = blockOf(8000);
  EXPECT_EQ(VersionBlock(most).Text(u"040904B0", u"CompanyName"), QStringLiteral("Acme"));
  EXPECT_TRUE(VersionBlock(most).FirstTranslation());
  // Its length no longer fits into the word that holds it.
  const QByteArray over = blockOf(9000);
  EXPECT_FALSE(VersionBlock(over).FirstTranslation());
  EXPECT_TRUE(VersionBlock(over).Fixed());
}

}  // namespace
}  // namespace quarl::plugins
