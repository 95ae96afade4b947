#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QImageReader>
#include <QRect>
#include <QString>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace {

QImage Load(const QString& path) {
  return QImage(QStringLiteral(":/quarl/pictures/") + path).convertToFormat(QImage::Format_ARGB32);
}

QImage LoadIcon(const char* name, int size) {
  return Load(QStringLiteral("%1/%2.png").arg(size).arg(QLatin1StringView(name)));
}

template <typename Act>
void EachPixel(const QImage& image, Act act) {
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) act(x, y, image.pixel(x, y));
  }
}

int CountPixels(const QImage& image, bool (*wanted)(QRgb)) {
  int count = 0;
  EachPixel(image, [&](int, int, QRgb pixel) { count += wanted(pixel) ? 1 : 0; });
  return count;
}

// The picture as somebody sees it who sees no colours, on a ground of the given grey.
QImage Greyscale(const QImage& image, int ground) {
  QImage grey(image.size(), QImage::Format_Grayscale8);
  EachPixel(image, [&](int x, int y, QRgb pixel) {
    const int level = (qGray(pixel) * qAlpha(pixel) + ground * (255 - qAlpha(pixel))) / 255;
    grey.setPixelColor(x, y, QColor(level, level, level));
  });
  return grey;
}

// Where the picture covers its ground: its outline with the light glyph left out, whatever its colours are.
QImage Shape(const QImage& image) {
  QImage shape(image.size(), QImage::Format_Grayscale8);
  EachPixel(image, [&](int x, int y, QRgb pixel) {
    const bool covered = qAlpha(pixel) >= 128 && qGray(pixel) < 190;
    shape.setPixelColor(x, y, covered ? Qt::black : Qt::white);
  });
  return shape;
}

double DifferingShare(const QImage& a, const QImage& b) {
  int differing = 0;
  EachPixel(a, [&](int x, int y, QRgb pixel) { differing += pixel != b.pixel(x, y) ? 1 : 0; });
  return double(differing) / (a.width() * a.height());
}

double DifferingShape(const char* a, const char* b, int size) {
  return DifferingShare(Shape(LoadIcon(a, size)), Shape(LoadIcon(b, size)));
}

double MeanContrast(const QImage& image, int ground) {
  const QImage grey = Greyscale(image, ground);
  double sum = 0;
  int covered = 0;
  EachPixel(grey, [&](int x, int y, QRgb pixel) {
    if (qAlpha(image.pixel(x, y)) < 128) return;
    sum += std::abs(qGray(pixel) - ground);
    ++covered;
  });
  return covered == 0 ? 0 : sum / covered;
}

const std::vector<const char*> iconNames = {
    "iSERVERGROUP", "iSERVER",    "iLOGS",          "iCONFIGURATION", "iALERT",        "iTEST",
    "iOPTIONS",     "iSEVERITY1", "iSEVERITY2",     "iSEVERITY3",     "iTEST_STATE1",  "iTEST_STATE2",
    "iTEST_STATE3", "bGROUP_ADD", "bGROUP_SUB",     "bSERVER_ADD",    "bSERVER_SUB",   "bTEST_ADD",
    "bTEST_SUB",    "bALERT_ADD", "bALERT_SUB",     "bCHECK_TEST",    "bCHECK_SERVER", "bCHECK_GROUP",
    "bPROPERTIES",  "bREFRESH",   "bSERVICE_START", "bSERVICE_STOP",  "quarl"};

TEST(Pictures, EveryIconIsDrawnAndSeenOnLightAndDarkGround) {
  for (const char* name : iconNames) {
    for (const int size : {16, 20, 24, 32, 48}) {
      if (size == 20 && std::string(name) == "quarl") continue;
      SCOPED_TRACE(std::string(name) + " at " + std::to_string(size));
      const QImage icon = LoadIcon(name, size);
      ASSERT_EQ(icon.size(), QSize(size, size));
      const double covered = double(CountPixels(icon, [](QRgb p) { return qAlpha(p) >= 128; })) / (size * size);
      EXPECT_GT(covered, 0.25);
      EXPECT_GT(MeanContrast(icon, 0xf5), 40);
      EXPECT_GT(MeanContrast(icon, 0x26), 40);
    }
  }
}

TEST(Pictures, NoTwoIconsLookTheSameWithoutColour) {
  for (std::size_t i = 0; i < iconNames.size(); ++i) {
    for (std::size_t j = i + 1; j < iconNames.size(); ++j)
      EXPECT_GT(DifferingShape(iconNames[i], iconNames[j], 16), 0.01) << iconNames[i] << " and " << iconNames[j];
  }
}

TEST(Pictures, StatesAndSeveritiesDifferInShape) {
  const struct {
    const char* what;
    std::vector<const char*> names;
    double least;  // the share of the area in which any two must differ
  } families[] = {
      {"test states", {"iTEST_STATE1", "iTEST_STATE2", "iTEST_STATE3"}, 0.20},
      {"severities", {"iSEVERITY1", "iSEVERITY2", "iSEVERITY3"}, 0.10},
      {"failed test and error", {"iTEST_STATE3", "iSEVERITY3"}, 0.20},
  };
  for (const auto& family : families) {
    for (const int size : {16, 24, 32}) {
      for (std::size_t i = 0; i < family.names.size(); ++i) {
        for (std::size_t j = i + 1; j < family.names.size(); ++j) {
          EXPECT_GT(DifferingShape(family.names[i], family.names[j], size), family.least)
              << family.what << ": " << family.names[i] << " and " << family.names[j] << " at " << size;
        }
      }
    }
  }
}

// Left and badge corner of the 16-pixel picture do not touch, so that each is compared alone.
TEST(Pictures, BadgesAndThingsAreTheSameInEveryPairing) {
  const QRect thing(0, 0, 7, 16);
  const QRect badge(9, 9, 7, 7);
  const std::pair<QRect, std::vector<const char*>> rows[] = {
      {badge, {"bGROUP_ADD", "bSERVER_ADD", "bTEST_ADD", "bALERT_ADD"}},
      {badge, {"bGROUP_SUB", "bSERVER_SUB", "bTEST_SUB", "bALERT_SUB"}},
      {badge, {"bCHECK_GROUP", "bCHECK_SERVER", "bCHECK_TEST"}},
      {thing, {"bGROUP_ADD", "bGROUP_SUB", "bCHECK_GROUP"}},
      {thing, {"bSERVER_ADD", "bSERVER_SUB", "bCHECK_SERVER"}},
      {thing, {"bTEST_ADD", "bTEST_SUB", "bCHECK_TEST"}},
      {thing, {"bALERT_ADD", "bALERT_SUB"}},
      {thing, {"bSERVICE_START", "bSERVICE_STOP"}},
  };
  for (const auto& [part, names] : rows) {
    const QImage first = LoadIcon(names.front(), 16).copy(part);
    for (const char* name : names) {
      EXPECT_EQ(DifferingShare(first, LoadIcon(name, 16).copy(part)), 0) << names.front() << " and " << name;
    }
  }
}

TEST(Pictures, LargePicturesComeAtTwoScales) {
  const std::vector<std::pair<const char*, QSize>> rows = {{"SplashLogo", {480, 280}}, {"ScanWizardLogo", {164, 314}}};
  for (const auto& [name, size] : rows) {
    const QImage once = Load(QLatin1StringView(name) + QStringLiteral(".png"));
    const QImage twice = Load(QLatin1StringView(name) + QStringLiteral("@2x.png"));
    EXPECT_EQ(once.size(), size) << name;
    EXPECT_EQ(twice.size(), size * 2) << name;
    EXPECT_EQ(CountPixels(once, [](QRgb p) { return qAlpha(p) == 255; }), size.width() * size.height()) << name;
    // It is still the same picture.
    const QImage halved = twice.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    EXPECT_NEAR(MeanContrast(halved, 0), MeanContrast(once, 0), 1) << name;
  }
}

// The splash writes two lines over the bottom of its picture: that band must stay of one dark tone.
TEST(Pictures, SplashLeavesABandForText) {
  const QImage band = Load(QStringLiteral("SplashLogo.png")).copy(0, 212, 480, 64);
  const QRgb tone = band.pixel(0, 0);
  EXPECT_LT(qGray(tone), 64);
  EachPixel(band, [&](int x, int y, QRgb pixel) { ASSERT_EQ(pixel, tone) << x << ", " << y; });
}

TEST(Pictures, ProgramIconHasTheDesktopSizes) {
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    EXPECT_EQ(LoadIcon("quarl", size).size(), QSize(size, size));
  }
}

TEST(Pictures, DragCursorIsAnIconFileBesideTheProgram) {
  QImageReader reader(QStringLiteral(QUARL_LAYOUT_DIR "/DRAGMOVE.ico"));
  EXPECT_EQ(reader.format(), "ico");
  ASSERT_EQ(reader.imageCount(), 2);
  for (const int size : {32, 64}) {
    const QImage cursor = reader.read();
    ASSERT_EQ(cursor.size(), QSize(size, size)) << reader.errorString().toStdString();
    // The pointer's tip is drawn at the top left, the far corner above its tail is empty.
    EXPECT_GT(qAlpha(cursor.pixel(size / 16, size / 16)), 128);
    EXPECT_EQ(qAlpha(cursor.pixel(size - 1, 0)), 0);
    reader.jumpToNextImage();
  }
}

}  // namespace
