#include "plugins/ModuleWaitDialog.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <optional>

#include "ui/BusyPointer.h"

namespace quarl::plugins {
namespace {

/// The dialog with the Cancel button; comes when a call takes long without a dialog of its own.
class CancelDialog final : public QDialog {
 public:
  CancelDialog(QWidget* owner, const QString& module) : QDialog(owner) {
    setObjectName(QStringLiteral("ModuleWait"));
    setWindowTitle(QCoreApplication::applicationName());
    setWindowModality(Qt::ApplicationModal);
    auto* label = new QLabel(QStringLiteral("Waiting for the module %1.").arg(module), this);
    label->setTextFormat(Qt::PlainText);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton* const cancel = buttons->button(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("CancelButton"));
    cancel->setIcon({});
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(buttons);
  }
};

/// One wait. A modal dialog that is never on the screen blocks the windows and runs the events.
class Waiting {
 public:
  Waiting(QWidget* owner, HostCall& call, std::chrono::milliseconds cancelAfter)
      : owner_(owner), call_(call), blocker_(owner), cancel_(owner, call.Module()) {
    blocker_.setAttribute(Qt::WA_DontShowOnScreen);
    blocker_.setWindowModality(Qt::ApplicationModal);
    patience_.setSingleShot(true);
    patience_.setInterval(cancelAfter);
    QObject::connect(&patience_, &QTimer::timeout, &cancel_, [this] { cancel_.show(); });
    QObject::connect(&cancel_, &QDialog::rejected, &blocker_, [this] {
      call_.Cancel();
      blocker_.done(QDialog::Rejected);
    });
  }

  void Run() {
    QSocketNotifier notifier(call_.Descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &blocker_, [this] { Advance(); });
    ShowState();
    if (!call_.Done()) blocker_.exec();
    cancel_.hide();
  }

 private:
  void Advance() {
    call_.Advance();
    ShowState();
    if (call_.Done()) blocker_.done(QDialog::Accepted);
  }

  void ShowState() {
    const bool idle = !call_.DialogUp() && !call_.Done();
    if (idle == busy_.has_value()) return;
    if (idle) {
      busy_.emplace(owner_);
      patience_.start();
    } else {
      busy_.reset();
      patience_.stop();
      cancel_.hide();
    }
  }

  QWidget* owner_;
  HostCall& call_;
  QDialog blocker_;
  CancelDialog cancel_;
  QTimer patience_;
  std::optional<ui::BusyPointer> busy_;
};

}  // namespace

ModuleWaitDialog::ModuleWaitDialog(QWidget* window, std::chrono::milliseconds cancelAfter)
    : window_(window), cancelAfter_(cancelAfter) {}

std::uint64_t ModuleWaitDialog::OwnerWindow() const {
  // Only there does the number mean the same to another process.
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return 0;
  const QWidget* const top = Top();
  return top != nullptr ? top->window()->effectiveWinId() : 0;
}

void ModuleWaitDialog::Wait(HostCall& call) {
  Waiting(Top(), call, cancelAfter_).Run();
}

QWidget* ModuleWaitDialog::Top() const {
  QWidget* const modal = QApplication::activeModalWidget();
  return modal != nullptr ? modal : window_.data();
}

}  // namespace quarl::plugins
