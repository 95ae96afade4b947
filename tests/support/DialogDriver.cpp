#include "support/DialogDriver.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <ostream>

namespace quarl::testing {
namespace {

using namespace std::chrono_literals;
constexpr qint64 kStuckAfterMs = 5000;

ShownBox Read(const QMessageBox& box) {
  return {box.accessibleDescription(), box.windowTitle(), box.text()};
}

std::string Describe(const QWidget& dialog) {
  QString text = QStringLiteral("%1 \"%2\"").arg(dialog.objectName(), dialog.windowTitle());
  if (const auto* box = qobject_cast<const QMessageBox*>(&dialog)) text += QStringLiteral(": ") + box->text();
  return text.toStdString();
}

void Dismiss(QWidget& widget) {
  if (auto* dialog = qobject_cast<QDialog*>(&widget)) {
    dialog->done(QDialog::Rejected);
  } else {
    widget.close();
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ShownBox& box) {
  return out << box.kind.toStdString() << " \"" << box.title.toStdString() << "\" \"" << box.text.toStdString() << '"';
}

DialogDriver::DialogDriver() {
  Arm();
}

DialogDriver::~DialogDriver() {
  Verify();
}

void DialogDriver::Expect(const QString& objectName, Act act) {
  expected_.push_back(
      {objectName, [objectName](QWidget& dialog) { return dialog.objectName() == objectName; }, std::move(act)});
}

void DialogDriver::ExpectBox(const ShownBox& box, const QString& button) {
  const auto fits = [box](QWidget& dialog) {
    const auto* shown = qobject_cast<QMessageBox*>(&dialog);
    return shown && Read(*shown) == box;
  };
  expected_.push_back({QStringLiteral("box %1 \"%2\" \"%3\"").arg(box.kind, box.title, box.text), fits, Click(button)});
}

void DialogDriver::ExpectAnyBox(const QString& button) {
  const auto fits = [](QWidget& dialog) { return qobject_cast<QMessageBox*>(&dialog) != nullptr; };
  expected_.push_back({QStringLiteral("any message box"), fits, Click(button)});
}

void DialogDriver::ExpectError(const QString& end) {
  const auto fits = [end](QWidget& dialog) {
    const auto* shown = qobject_cast<QMessageBox*>(&dialog);
    return shown && Read(*shown).kind == QStringLiteral("message") && shown->text().endsWith(end);
  };
  expected_.push_back({QStringLiteral("error ...%1").arg(end), fits, Click(QStringLiteral("OKButton"))});
}

void DialogDriver::Verify() {
  for (const Expected& expected : expected_) {
    ADD_FAILURE() << "This dialog did not come: " << expected.description.toStdString();
  }
  expected_.clear();
}

DialogDriver::Act DialogDriver::Click(const QString& button) {
  return [button](QWidget& dialog) {
    auto* found = dialog.findChild<QAbstractButton*>(button);
    if (found && found->isEnabled() && found->isVisible()) {
      QTest::mouseClick(found, Qt::LeftButton);
      return;
    }
    ADD_FAILURE() << "No button " << button.toStdString() << " to click in " << Describe(dialog);
    Dismiss(dialog);
  };
}

void DialogDriver::Arm() {
  QTimer::singleShot(2ms, &context_, [this] { Look(); });
}

// Armed anew before anything is answered: an answer that opens another dialog returns only when that one is closed.
void DialogDriver::Look() {
  Arm();
  std::erase_if(answered_, [](const QPointer<QWidget>& known) { return !known || !known->isVisible(); });
  QWidget* dialog = QApplication::activeModalWidget();
  if (!dialog || !dialog->isVisible() || dialog->testAttribute(Qt::WA_DontShowOnScreen)) return;
  if (std::find(answered_.begin(), answered_.end(), dialog) != answered_.end()) {
    CloseIfStuck(*dialog);
    return;
  }
  answered_.emplace_back(dialog);
  sinceAnswer_.restart();
  Answer(*dialog);
  sinceAnswer_.restart();
}

void DialogDriver::Answer(QWidget& dialog) {
  if (const auto* box = qobject_cast<QMessageBox*>(&dialog)) boxes_.push_back(Read(*box));
  if (expected_.empty()) {
    ADD_FAILURE() << "A dialog that nobody expected: " << Describe(dialog);
    Dismiss(dialog);
    return;
  }
  const Expected next = std::move(expected_.front());
  expected_.pop_front();
  if (!next.fits(dialog)) {
    ADD_FAILURE() << "Expected " << next.description.toStdString() << ", but this came: " << Describe(dialog);
    Dismiss(dialog);
    return;
  }
  next.act(dialog);
}

void DialogDriver::CloseIfStuck(QWidget& dialog) {
  if (sinceAnswer_.elapsed() < kStuckAfterMs) return;
  ADD_FAILURE() << "This dialog stayed after its answer: " << Describe(dialog);
  sinceAnswer_.restart();
  Dismiss(dialog);
}

}  // namespace quarl::testing
