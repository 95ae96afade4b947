#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <cstdlib>
#include <random>

#include "plugins/ModuleBuilder.h"
#include "plugins/ModulePicture.h"
#include "plugins/contract/ModuleFile.h"

namespace quarl::plugins {
namespace {

using build::Words;

QImage Picture(const QByteArray& module) {
  QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("module.dll")));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(module);
  file.close();
  return LoadModulePicture(file.fileName()).toImage().convertToFormat(QImage::Format_ARGB32);
}

QByteArray Header(quint32 bits, quint32 compression, quint32 colours = 0, quint32 height = 2) {
  return Words({40, 2, height, bits << 16 | 1, compression, 0, 0, 0, colours, 0});
}

/// The long header, with channel masks in it.
QByteArray LongHeader(quint32 size, const std::vector<quint32>& masks) {
  QByteArray header = Words({size, 2, 2, 0x00200001, 3, 0, 0, 0, 0, 0}) + Words(masks);
  return header.append(size - header.size(), '\0');
}

/// The same but for what fewer bits a channel and the premultiplied alpha of a pixmap lose.
bool Near(QRgb a, QRgb b) {
  const auto apart = [](int x, int y) { return std::abs(x - y) > 8; };
  return qAlpha(a) == qAlpha(b) && !apart(qRed(a), qRed(b)) && !apart(qGreen(a), qGreen(b)) &&
         !apart(qBlue(a), qBlue(b));
}

const quint32 kRed = 0xffff0000;
const quint32 kGreen = 0xff00ff00;
const quint32 kBlue = 0xff0000ff;
const quint32 kWhite = 0xffffffff;

// Every picture: red, green / blue, white (transparent green where there is alpha), stored bottom row first.
struct Form {
  const char* name;
  QByteArray bytes;
  quint32 last = kWhite;
};

const QByteArray kPalette = Words({0xff0000, 0x00ff00, 0x0000ff, 0xffffff});
const std::vector<quint32> kMasks = {0xff0000, 0xff00, 0xff};

std::vector<Form> Forms() {
  const QByteArray rgb555 = Words({0x7fff001f, 0x03e07c00});
  const QByteArray rgb565 = Words({0xffff001f, 0x07e0f800});
  const QByteArray rgb24 = QByteArray::fromHex("ff0000ffffff00000000ff00ff000000");
  const QByteArray rgb32 = Words({0xff, 0xffffff, 0xff0000, 0xff00});
  const QByteArray argb = Words({kBlue, 0x4000ff00, kRed, kGreen});
  QByteArray core = Words({12, 0x00020002, 0x00180001});
  return {
      {"4 bits", Header(4, 0, 4) + kPalette + QByteArray::fromHex("2300000001000000")},
      {"4 bits, full palette",
       Header(4, 0) + kPalette + QByteArray(48, '\0') + QByteArray::fromHex("2300000001000000")},
      {"4 bits, runs", Header(4, 2, 4) + kPalette + QByteArray::fromHex("02230000020100000001")},
      {"8 bits", Header(8, 0, 4) + kPalette + QByteArray::fromHex("0203000000010000")},
      {"8 bits, top row first", Header(8, 0, 4, 0xfffffffe) + kPalette + QByteArray::fromHex("0001000002030000")},
      {"8 bits, runs", Header(8, 1, 4) + kPalette + QByteArray::fromHex("0102010300000100010100000001")},
      {"16 bits", Header(16, 0) + rgb555},
      {"16 bits, masks", Header(16, 3) + Words({0xf800, 0x07e0, 0x001f}) + rgb565},
      {"24 bits", Header(24, 0) + rgb24},
      {"24 bits, old header", core + rgb24},
      {"24 bits, spare palette", Header(24, 0, 1) + Words({0x123456}) + rgb24},
      {"32 bits", Header(32, 0) + rgb32},
      {"32 bits, masks", Header(32, 3) + Words(kMasks) + rgb32},
      {"version 4, no alpha", LongHeader(108, kMasks) + rgb32},
      {"version 4, alpha", LongHeader(108, {0xff0000, 0xff00, 0xff, 0xff000000}) + argb, 0x4000ff00},
      {"version 5, alpha", LongHeader(124, {0xff0000, 0xff00, 0xff, 0xff000000}) + argb, 0x4000ff00},
  };
}

TEST(ModulePictureTest, ShowsEveryFormOfBitmap) {
  for (const Form& form : Forms()) {
    const QImage image = Picture(build::File(ModuleFormat::Pe32, {build::Icon(form.bytes)}));
    ASSERT_EQ(image.size(), QSize(2, 2)) << form.name;
    const quint32 expected[] = {kRed, kGreen, kBlue, form.last};
    for (int i = 0; i < 4; ++i) {
      EXPECT_TRUE(Near(image.pixel(i % 2, i / 2), expected[i])) << form.name << ", pixel " << i;
    }
  }
}

TEST(ModulePictureTest, ShowsTwoColours) {
  const QByteArray bits = Header(1, 0) + Words({0x00ff00, 0x0000ff}) + QByteArray::fromHex("8000000040000000");
  const QImage image = Picture(build::File(ModuleFormat::Elf64, {build::Icon(bits)}));
  ASSERT_EQ(image.size(), QSize(2, 2));
  EXPECT_EQ(image.pixel(0, 0), kGreen);
  EXPECT_EQ(image.pixel(1, 0), kBlue);
  EXPECT_EQ(image.pixel(0, 1), kBlue);
}

TEST(ModulePictureTest, NothingForAFileThatIsNoModuleWithAPicture) {
  const QByteArray module = build::File(ModuleFormat::Elf64, {build::Icon()});
  EXPECT_FALSE(Picture(module).isNull());
  EXPECT_TRUE(Picture(module.chopped(1)).isNull());
  EXPECT_TRUE(Picture(build::File(ModuleFormat::Elf64, {})).isNull());
  EXPECT_TRUE(Picture({}).isNull());
  EXPECT_TRUE(LoadModulePicture(QStringLiteral("/no/such/file.dll")).isNull());
  EXPECT_TRUE(LoadModulePicture(QString()).isNull());
}

TEST(ModulePictureTest, WhatPassesTheInspectionHasAPicture) {
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same copies in every run
  const auto upTo = [&](qsizetype end) { return static_cast<qsizetype>(random() % static_cast<size_t>(end)); };
  const std::vector<Form> forms = Forms();
  int shown = 0;
  for (int i = 0; i < 4000; ++i) {
    QByteArray bytes = forms[static_cast<size_t>(upTo(static_cast<qsizetype>(forms.size())))].bytes;
    for (qsizetype changes = 1 + upTo(3); changes > 0; --changes) {
      bytes[upTo(std::min<qsizetype>(bytes.size(), 60))] = static_cast<char>(upTo(2) == 0 ? random() : random() % 4);
    }
    if (upTo(4) == 0) bytes.chop(upTo(bytes.size()));
    const QByteArray module = build::File(ModuleFormat::Elf64, {build::Icon(bytes)});
    if (!InspectModuleBytes(module).isEmpty()) continue;
    ++shown;
    ASSERT_FALSE(Picture(module).isNull()) << bytes.toHex(' ').toStdString();
  }
  EXPECT_GT(shown, 300);
}

}  // namespace
}  // namespace quarl::plugins
