#include "editors/ThresholdInput.h"

#include <QLineEdit>
#include <algorithm>
#include <limits>

#include "base/Error.h"
#include "editors/NumberText.h"

namespace quarl::editors {

ThresholdInput::ThresholdInput(QWidget* parent) : QAbstractSpinBox(parent) {
  setObjectName(QStringLiteral("NFailUpDown"));
  setAccessibleName(QStringLiteral("NFailUpDown"));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setKeyboardTracking(false);
  setCorrectionMode(CorrectToPreviousValue);
  setProperty("minimum", kMinimum);
  setProperty("maximum", kMaximum);
  lineEdit()->setObjectName(QStringLiteral("NFail"));
  lineEdit()->setAccessibleName(QStringLiteral("NFail"));
  lineEdit()->setValidator(nullptr);
  lineEdit()->setMaxLength(std::numeric_limits<int>::max());
  const auto follow = [this] {
    setProperty("value", Value());
    update();
  };
  connect(lineEdit(), &QLineEdit::textChanged, this, follow);
  follow();
}

void ThresholdInput::SetText(const QString& text) {
  lineEdit()->setText(text);
}

int ThresholdInput::Number() const {
  try {
    return LeadingNumber(text());
  } catch (const Error&) {
    return text().trimmed().startsWith(u'-') ? kMinimum - 1 : kMaximum + 1;
  }
}

int ThresholdInput::Value() const {
  return std::clamp(Number(), kMinimum, kMaximum);
}

void ThresholdInput::stepBy(int steps) {
  SetText(QString::number(std::clamp(Number() + steps, kMinimum, kMaximum)));
  lineEdit()->selectAll();
}

QAbstractSpinBox::StepEnabled ThresholdInput::stepEnabled() const {
  if (isReadOnly()) return StepNone;
  StepEnabled enabled = StepNone;
  enabled.setFlag(StepUpEnabled, Number() < kMaximum);
  enabled.setFlag(StepDownEnabled, Number() > kMinimum);
  return enabled;
}

QSize ThresholdInput::sizeHint() const {
  const QSize least = QAbstractSpinBox::sizeHint();
  return {least.width() + fontMetrics().horizontalAdvance(QStringLiteral("00000")), least.height()};
}

}  // namespace quarl::editors
