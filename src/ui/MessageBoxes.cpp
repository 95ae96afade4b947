#include "ui/MessageBoxes.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "ui/BoxText.h"

namespace quarl::ui {
namespace {

struct Kind {
  const char* name;
  const char* description;
  QMessageBox::Icon icon;
};
constexpr Kind kPlain{"PlainBox", "message", QMessageBox::NoIcon};
constexpr Kind kStop{"StopBox", "critical", QMessageBox::Critical};
constexpr Kind kInfo{"InfoBox", "information", QMessageBox::Information};
constexpr Kind kWarning{"WarningBox", "warning", QMessageBox::Warning};
constexpr Kind kConfirmWarning{"ConfirmBox", "warning", QMessageBox::Warning};
constexpr Kind kConfirmQuestion{"ConfirmBox", "question", QMessageBox::Question};

void NameButton(const QMessageBox& box, QMessageBox::StandardButton which, const char* name) {
  if (QAbstractButton* button = box.button(which)) button->setObjectName(QLatin1String(name));
}

QMessageBox::StandardButton Show(QWidget* owner, const Kind& kind, const QString& title, const QString& text,
                                 QMessageBox::StandardButtons buttons = QMessageBox::Ok) {
  // Over a window that is not there yet the box would stand anywhere; without owner it stands on the screen's middle.
  QWidget* over = owner && owner->isVisible() ? owner : nullptr;
  QMessageBox box(kind.icon, title, FitForBox(text), buttons, over);
  box.setTextFormat(Qt::PlainText);
  box.setObjectName(QLatin1String(kind.name));
  box.setAccessibleDescription(QLatin1String(kind.description));
  NameButton(box, QMessageBox::Ok, "OKButton");
  NameButton(box, QMessageBox::Yes, "YesButton");
  NameButton(box, QMessageBox::No, "NoButton");
  if (buttons.testFlag(QMessageBox::No)) {
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
  }
  return static_cast<QMessageBox::StandardButton>(box.exec());
}

}  // namespace

MessageBoxes::MessageBoxes(QWidget* owner) : owner_(owner) {}

void MessageBoxes::Plain(const QString& text) const {
  Show(owner_, kPlain, ApplicationTitle(), text);
}

bool MessageBoxes::Confirm(Text text, Icon icon) const {
  const Kind& kind = icon == Icon::Question ? kConfirmQuestion : kConfirmWarning;
  return Show(owner_, kind, LoadText(Text::TitleWarning), LoadText(text), QMessageBox::Yes | QMessageBox::No) ==
         QMessageBox::Yes;
}

void MessageBoxes::Stop(Text text, Title title) const {
  Stop(LoadText(text), title);
}

void MessageBoxes::Stop(const QString& text, Title title) const {
  Show(owner_, kStop, title == Title::OfKind ? LoadText(Text::TitleStop) : ApplicationTitle(), text);
}

void MessageBoxes::Info(Text text) const {
  Info(LoadText(text));
}

void MessageBoxes::Info(const QString& text) const {
  Show(owner_, kInfo, LoadText(Text::TitleInfo), text);
}

void MessageBoxes::Warning(Text text) const {
  Warning(LoadText(text));
}

void MessageBoxes::Warning(const QString& text) const {
  Show(owner_, kWarning, LoadText(Text::TitleWarning), text);
}

QString MessageBoxes::ApplicationTitle() {
  return QGuiApplication::applicationDisplayName();
}

}  // namespace quarl::ui
