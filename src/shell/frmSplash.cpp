#include "shell/frmSplash.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QThread>
#include <QWindow>

#include "shell/ProductInfo.h"
#include "ui/PictureIcon.h"

namespace quarl::shell {
namespace {

constexpr int kTextMargin = 20;
constexpr qint64 kLongestWaitMs = 200;  // for the window system to show the splash

// The lower part of the logo picture is left dark for the texts, in every colour scheme.
QLabel* TextOnLogo(const char* name, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, QColor(0xd7, 0xe3, 0xf0));
  label->setPalette(palette);
  return label;
}

}  // namespace

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint),
      trap_(QStringLiteral("frmSplash"), ui::MessageBoxes(this)),
      imgLogo_(new QLabel(this)),
      lblVersion_(TextOnLogo("lblVersion", this)),
      lblCopyright_(TextOnLogo("lblCopyright", this)),
      closeTimer_(new QTimer(this)) {
  setObjectName(QStringLiteral("frmSplash"));
  setAccessibleName(QStringLiteral("frmSplash"));
  setWindowTitle(ProductInfo::kName.toString());
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);
  setFocusPolicy(Qt::StrongFocus);
  imgLogo_->setObjectName(QStringLiteral("imgLogo"));
  imgLogo_->setAccessibleName(QStringLiteral("imgLogo"));
  closeTimer_->setObjectName(QStringLiteral("closeTimer"));
  closeTimer_->setSingleShot(true);
  closeTimer_->setInterval(4000);
  closeTimer_->callOnTimeout(this, [this] { closeTimer_Timer(); });
  Form_Load();
}

void frmSplash::Form_Load() {
  trap_("Form_Load", [&] {
    lblVersion_->setText(ProductInfo::Version());
    lblCopyright_->setText(ProductInfo::Copyright());
    const QPixmap logo = ui::LargePicture(QStringLiteral("SplashLogo"), devicePixelRatioF());
    const QSize size = logo.isNull() ? QSize(480, 280) : logo.deviceIndependentSize().toSize();
    setFixedSize(size);
    imgLogo_->setGeometry(QRect(QPoint(), size));
    imgLogo_->setPixmap(logo);
    PlaceTexts(size);
    if (logo.isNull()) throw Error(QStringLiteral("The picture \"SplashLogo\" is missing."));
  });
}

void frmSplash::PlaceTexts(const QSize& size) {
  const int line = fontMetrics().lineSpacing() + 4;
  const int top = size.height() * 208 / 280 + (size.height() * 72 / 280 - 2 * line) / 2;
  lblVersion_->setGeometry(kTextMargin, top, size.width() - 2 * kTextMargin, line);
  lblCopyright_->setGeometry(kTextMargin, top + line, size.width() - 2 * kTextMargin, line);
}

void frmSplash::ShowAtOnce() {
  if (const QScreen* at = screen()) move(at->availableGeometry().center() - rect().center());
  show();
  closeTimer_->start();
  QElapsedTimer waited;
  waited.start();
  while (!windowHandle()->isExposed() && waited.elapsed() < kLongestWaitMs) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    QThread::usleep(500);
  }
  repaint();
}

void frmSplash::keyPressEvent(QKeyEvent* event) {
  event->accept();
  Form_KeyPress();
}

void frmSplash::Form_KeyPress() {
  trap_("Form_KeyPress", [&] { close(); });
}

void frmSplash::closeTimer_Timer() {
  trap_("closeTimer_Timer", [&] { close(); });
}

}  // namespace quarl::shell
