#include <gtest/gtest.h>

#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <cstdlib>

#include "base/Error.h"
#include "support/Text.h"
#include "ui/BusyPointer.h"
#include "ui/ImageList.h"
#include "ui/PictureIcon.h"

namespace quarl::ui {
namespace {

QPixmap Square(int side, QColor colour) {
  QPixmap picture(side, side);
  picture.fill(colour);
  return picture;
}

QImage OnGround(const QIcon& icon, QColor ground, QIcon::Mode mode, int side = 24) {
  QImage image(side, side, QImage::Format_ARGB32);
  image.fill(ground);
  QPainter painter(&image);
  icon.paint(&painter, image.rect(), Qt::AlignCenter, mode);
  return image;
}

int Colourfulness(QRgb pixel) {
  return std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}) - std::min({qRed(pixel), qGreen(pixel), qBlue(pixel)});
}

struct Look {
  int strength = 0;       // how far the picture stands out of its ground, summed
  int colourfulness = 0;  // of its most colourful pixel
};

Look LookOf(const QImage& image, QColor ground) {
  Look look;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      look.strength += std::abs(qGray(image.pixel(x, y)) - qGray(ground.rgb()));
      look.colourfulness = std::max(look.colourfulness, Colourfulness(image.pixel(x, y)));
    }
  }
  return look;
}

TEST(ImageList, RefusesImagesThatCannotBeShown) {
  ImageList list;
  list.Add(Q("iTEST"), PictureIcon(Square(16, Qt::red)));
  EXPECT_THROW(list.Add(Q("iTEST"), PictureIcon(Square(16, Qt::blue))), Error) << "the key is taken";
  EXPECT_THROW(list.Add(Q("iTEST7"), PictureIcon(QPixmap())), Error) << "no picture";
  EXPECT_THROW(list.Add(Q("iNONE"), PictureIcon(Q("iNONE"))), Error) << "no such file";
  EXPECT_THROW(list.Add(QString(), PictureIcon(Square(16, Qt::red))), Error) << "no key";
  EXPECT_EQ(list.Count(), 1);
  EXPECT_EQ(OnGround(list.Icon(Q("iTEST")), Qt::white, QIcon::Normal).pixelColor(12, 12), QColor(Qt::red));
  EXPECT_THROW(std::ignore = list.Icon(Q("itest")), Error);
}

TEST(PictureIcon, TakesThePictureMadeForTheSize) {
  const QIcon icon = PictureIcon(Q("iSERVER"));
  for (const int side : {16, 20, 24, 32, 48}) {
    EXPECT_EQ(icon.pixmap(QSize(side, side), 1.0).toImage(),
              QPixmap(Q(":/quarl/pictures/%1/iSERVER.png").arg(side)).toImage())
        << side;
  }
  EXPECT_EQ(icon.pixmap(QSize(16, 16), 2.0).size(), QSize(32, 32));
  EXPECT_EQ(icon.pixmap(QSize(18, 18), 1.0).size(), QSize(16, 16)) << "never blurred up";
  EXPECT_EQ(icon.pixmap(QSize(12, 12), 1.0).size(), QSize(12, 12));
}

TEST(PictureIcon, DrawsSmallPicturesInTheirSizeAndInTheMiddle) {
  const QIcon icon = PictureIcon(Square(8, Qt::red));
  const QImage drawn = OnGround(icon, Qt::white, QIcon::Normal, 16);
  EXPECT_EQ(drawn.pixelColor(8, 8), QColor(Qt::red));
  EXPECT_EQ(drawn.pixelColor(3, 3), QColor(Qt::white));
  EXPECT_EQ(drawn.pixelColor(12, 12), QColor(Qt::white));
}

TEST(PictureIcon, DisabledIsGreyAndFaintButVisibleOnLightAndDark) {
  const char* const names[] = {"bGROUP_ADD", "bSERVER_SUB", "bCHECK_TEST", "bPROPERTIES", "bREFRESH", "bSERVICE_STOP"};
  for (const QColor ground : {QColor(0xf0, 0xf0, 0xf0), QColor(0x2b, 0x2b, 0x2b)}) {
    for (const char* name : names) {
      const QIcon normal = PictureIcon(Q(name));
      const QIcon toolbar = WithDisabled(normal, GreyedIcon(normal));
      const Look bright = LookOf(OnGround(toolbar, ground, QIcon::Normal), ground);
      const Look disabled = LookOf(OnGround(toolbar, ground, QIcon::Disabled), ground);
      EXPECT_LE(disabled.colourfulness, 2) << name;
      EXPECT_LT(disabled.strength, bright.strength * 6 / 10) << name;
      EXPECT_GT(disabled.strength, bright.strength * 2 / 10) << name;
      EXPECT_EQ(OnGround(normal, ground, QIcon::Disabled), OnGround(toolbar, ground, QIcon::Disabled)) << name;
    }
  }
}

TEST(BusyPointer, GivesBackThePointerThatWasThere) {
  QWidget plain;
  QWidget crossed;
  crossed.setCursor(Qt::CrossCursor);
  {
    const BusyPointer first(&plain);
    const BusyPointer second(&crossed);
    EXPECT_EQ(plain.cursor().shape(), Qt::WaitCursor);
    EXPECT_EQ(crossed.cursor().shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(plain.cursor().shape(), Qt::ArrowCursor);
  EXPECT_EQ(crossed.cursor().shape(), Qt::CrossCursor);
}

}  // namespace
}  // namespace quarl::ui
