#include "ui/PictureIcon.h"

#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <array>
#include <optional>
#include <utility>

namespace quarl::ui {
namespace {

constexpr std::array kSizes{16, 20, 24, 32, 48, 64, 128, 256};

QPixmap NotLarger(const QPixmap& picture, const QSize& size) {
  if (picture.isNull() || (picture.width() <= size.width() && picture.height() <= size.height())) return picture;
  return picture.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// Sizes are those of device pixels throughout, which is what QIcon asks an engine for.
class Engine : public QIconEngine {
 public:
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
    if (size.isEmpty()) return {};
    const bool greyed = mode == QIcon::Disabled;
    const auto key = std::make_pair(qMin(size.width(), size.height()), greyed);
    auto found = drawn_.constFind(key);
    if (found == drawn_.constEnd()) {
      const QPixmap picture = NotLarger(Source(size, greyed), size);
      found = drawn_.insert(key, picture);
    }
    return *found;
  }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const qreal ratio = painter->device()->devicePixelRatioF();
    QPixmap picture = pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state);
    if (picture.isNull()) return;
    // A picture too small for a dense screen keeps the size that it has on an ordinary one.
    const QSizeF size = picture.size().scaled(rect.size(), Qt::KeepAspectRatio);
    QRect target(QPoint(), size.toSize().boundedTo(picture.size()));
    target.moveCenter(rect.center());
    painter->drawPixmap(target, picture);
  }

  QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return pixmap(size, mode, state).size();
  }

 protected:
  Engine() = default;
  Engine(const Engine&) = default;
  virtual QPixmap Source(const QSize& size, bool greyed) = 0;

 private:
  QHash<std::pair<int, bool>, QPixmap> drawn_;
};

class NamedEngine final : public Engine {
 public:
  explicit NamedEngine(QString name) : name_(std::move(name)) {}
  QIconEngine* clone() const override { return new NamedEngine(*this); }
  QString key() const override { return QStringLiteral("quarl-picture"); }
  bool isNull() override {
    if (!missing_) missing_ = FileFor(kSizes.front()).isEmpty();  // drawing asks for it again and again
    return *missing_;
  }

 private:
  QPixmap Source(const QSize& size, bool greyed) override {
    const QPixmap picture(FileFor(qMin(size.width(), size.height())));
    return greyed ? Greyed(picture) : picture;
  }

  // The largest picture that fits; below the smallest one, and where sizes are missing, the next that is there.
  QString FileFor(int wanted) const {
    QString best;
    for (const int size : kSizes) {
      const QString file = QStringLiteral(":/quarl/pictures/%1/%2.png").arg(size).arg(name_);
      if (size > wanted && !best.isEmpty()) break;
      if (QFile::exists(file)) best = file;
    }
    return best;
  }

  QString name_;
  std::optional<bool> missing_;
};

class PixmapEngine final : public Engine {
 public:
  explicit PixmapEngine(QPixmap picture) : picture_(std::move(picture)) {}
  QIconEngine* clone() const override { return new PixmapEngine(*this); }
  QString key() const override { return QStringLiteral("quarl-pixmap"); }
  bool isNull() override { return picture_.isNull(); }

 private:
  QPixmap Source(const QSize& /*size*/, bool greyed) override { return greyed ? Greyed(picture_) : picture_; }

  QPixmap picture_;
};

class PairEngine final : public Engine {
 public:
  PairEngine(QIcon normal, QIcon greyed) : normal_(std::move(normal)), greyed_(std::move(greyed)) {}
  QIconEngine* clone() const override { return new PairEngine(*this); }
  QString key() const override { return QStringLiteral("quarl-pair"); }
  bool isNull() override { return normal_.isNull(); }

 private:
  QPixmap Source(const QSize& size, bool greyed) override { return (greyed ? greyed_ : normal_).pixmap(size, 1.0); }

  QIcon normal_;
  QIcon greyed_;
};

class GreyedEngine final : public Engine {
 public:
  explicit GreyedEngine(QIcon icon) : icon_(std::move(icon)) {}
  QIconEngine* clone() const override { return new GreyedEngine(*this); }
  QString key() const override { return QStringLiteral("quarl-greyed"); }
  bool isNull() override { return icon_.isNull(); }

 private:
  QPixmap Source(const QSize& size, bool /*greyed*/) override { return Greyed(icon_.pixmap(size, 1.0)); }

  QIcon icon_;
};

}  // namespace

QIcon PictureIcon(const QString& name) {
  return QIcon(new NamedEngine(name));
}

QPixmap LargePicture(const QString& name, qreal devicePixelRatio) {
  const QString file = QStringLiteral(":/quarl/pictures/%1.png").arg(name);
  return QIcon(file).pixmap(QPixmap(file).size(), devicePixelRatio);  // an icon finds the larger drawing, too
}

QIcon PictureIcon(const QPixmap& picture) {
  return QIcon(new PixmapEngine(picture));
}

QIcon GreyedIcon(const QIcon& icon) {
  return QIcon(new GreyedEngine(icon));
}

QIcon WithDisabled(const QIcon& normal, const QIcon& greyed) {
  return QIcon(new PairEngine(normal, greyed));
}

QPixmap Greyed(const QPixmap& picture) {
  QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
  for (int y = 0; y < image.height(); ++y) {
    QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const int grey = qGray(line[x]);
      line[x] = qRgba(grey, grey, grey, qAlpha(line[x]) * 2 / 5);
    }
  }
  QPixmap greyed = QPixmap::fromImage(image);
  greyed.setDevicePixelRatio(picture.devicePixelRatio());
  return greyed;
}

}  // namespace quarl::ui
