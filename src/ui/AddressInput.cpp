#include "ui/AddressInput.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <algorithm>

#include "base/Error.h"
#include "ui/OctetEdit.h"

namespace quarl::ui {
namespace {

constexpr int kSpare = 6;  // logical pixels in an octet besides its digits

QLabel* MakeDot(QWidget* parent) {
  auto* dot = new QLabel(QStringLiteral("."), parent);
  dot->setForegroundRole(QPalette::Text);
  dot->setAttribute(Qt::WA_TransparentForMouseEvents);
  return dot;
}

[[noreturn]] void ThrowNoOctet(const QString& text) {
  throw Error(QStringLiteral("\"%1\" is no part of an IP address: each is a number from 0 to 255.").arg(text.left(80)));
}

}  // namespace

AddressInput::AddressInput(QWidget* parent) : QWidget(parent) {
  setLayoutDirection(Qt::LeftToRight);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setCursor(Qt::IBeamCursor);
  auto* row = new QHBoxLayout(this);
  row->setSpacing(0);
  for (int number = 1; number <= kOctets; ++number) {
    auto* octet = new OctetEdit(*this, number);
    octet->setObjectName(QStringLiteral("Octet%1").arg(number));
    octet->setAccessibleName(QStringLiteral("Octet %1").arg(number));
    octets_.at(static_cast<std::size_t>(number - 1)) = octet;
    if (number > 1) row->addWidget(MakeDot(this));
    row->addWidget(octet);
  }
  setFocusProxy(At(1));
  FitToFont();
}

OctetEdit* AddressInput::At(int number) const {
  return octets_.at(static_cast<std::size_t>(number - 1));
}

QString AddressInput::Text() const {
  return QStringLiteral("%1.%2.%3.%4").arg(Octet(1)).arg(Octet(2)).arg(Octet(3)).arg(Octet(4));
}

void AddressInput::SetText(const QString& dotted) {
  if (dotted.isEmpty()) return;
  int number = 0;
  for (const QString& part : dotted.split(u'.')) {
    const auto value = OctetEdit::ValueOf(part.trimmed());
    if (!value) ThrowNoOctet(part);
    if (++number > kOctets) throw Error(QStringLiteral("\"%1\" has more than four parts.").arg(dotted.left(80)));
    SetOctet(number, *value);
  }
}

int AddressInput::Octet(int number) const {
  return OctetEdit::ValueOf(At(number)->text()).value_or(0);
}

void AddressInput::SetOctet(int number, int value) {
  const QString text = QString::number(value);
  if (number < 1 || number > kOctets || !OctetEdit::ValueOf(text)) ThrowNoOctet(text);
  At(number)->setText(text);
}

bool AddressInput::IsBlank() const {
  return std::all_of(octets_.begin(), octets_.end(), [](const OctetEdit* octet) { return octet->text().isEmpty(); });
}

void AddressInput::Clear() {
  for (OctetEdit* octet : octets_) octet->clear();
}

void AddressInput::CopyAll() const {
  QApplication::clipboard()->setText(Text());
}

bool AddressInput::Take(OctetEdit& octet, const QString& text) {
  const QStringList parts = text.split(u'.');
  if (!std::all_of(parts.begin(), parts.end(),
                   [](const QString& part) { return OctetEdit::ValueOf(part).has_value(); }))
    return false;
  if (parts.size() == 1) {
    octet.setText(QString::number(text.toInt()));
    return true;
  }
  if (parts.size() != kOctets) return false;
  SetText(text);
  if (octet.hasFocus()) At(kOctets)->Enter(OctetEdit::Entry::AtEnd);
  return true;
}

void AddressInput::FitToFont() {
  const int digits = At(1)->fontMetrics().horizontalAdvance(QStringLiteral("000"));
  for (OctetEdit* octet : octets_) octet->setFixedWidth(digits + kSpare);
  QStyleOptionFrame option;
  option.initFrom(this);
  const int frame = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
  layout()->setContentsMargins(frame + 1, frame + 1, frame + 1, frame + 1);
}

QSize AddressInput::sizeHint() const {
  QLineEdit model;
  model.setFont(font());
  return {layout()->sizeHint().width(), model.sizeHint().height()};
}

void AddressInput::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  QStyleOptionFrame option;
  option.initFrom(this);
  option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
  option.state |= QStyle::State_Sunken;
  const bool focused =
      std::any_of(octets_.begin(), octets_.end(), [](const OctetEdit* octet) { return octet->hasFocus(); });
  option.state.setFlag(QStyle::State_HasFocus, focused);
  style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
}

void AddressInput::mousePressEvent(QMouseEvent* event) {
  const auto distance = [event](const OctetEdit* octet) {
    return qAbs(octet->geometry().center().x() - event->position().toPoint().x());
  };
  OctetEdit* nearest = *std::min_element(octets_.begin(), octets_.end(), [&](OctetEdit* first, OctetEdit* second) {
    return distance(first) < distance(second);
  });
  nearest->Enter(OctetEdit::Entry::SelectAll);
  event->accept();
}

void AddressInput::changeEvent(QEvent* event) {
  const bool sizes = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
  if (sizes && At(1) != nullptr) FitToFont();
  QWidget::changeEvent(event);
}

}  // namespace quarl::ui
