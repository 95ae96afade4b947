#include "ui/OctetEdit.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QValidator>
#include <algorithm>
#include <memory>
#include <utility>

#include "ui/AddressInput.h"

namespace quarl::ui {
namespace {

constexpr int kLargest = 255;
constexpr qsizetype kDigits = 3;

class OctetValidator : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& text, int& /*position*/) const override {
    return text.isEmpty() || OctetEdit::ValueOf(text) ? Acceptable : Invalid;
  }
};

bool IsDigit(QChar character) {
  return character >= u'0' && character <= u'9';
}

}  // namespace

std::optional<int> OctetEdit::ValueOf(const QString& text) {
  if (text.isEmpty() || text.size() > kDigits || !std::all_of(text.begin(), text.end(), IsDigit)) return std::nullopt;
  const int value = text.toInt();
  return value <= kLargest ? std::optional<int>(value) : std::nullopt;
}

OctetEdit::OctetEdit(AddressInput& owner, int number) : QLineEdit(&owner), owner_(owner), number_(number) {
  setFrame(false);
  setAlignment(Qt::AlignCenter);
  setValidator(new OctetValidator(this));
  setInputMethodHints(Qt::ImhDigitsOnly);
  // One tab stop for the whole address.
  setFocusPolicy(number == 1 ? Qt::StrongFocus : Qt::ClickFocus);
  connect(this, &QLineEdit::textChanged, this, [this] { KeepValid(); });
}

OctetEdit* OctetEdit::Neighbour(int step) const {
  const int number = number_ + step;
  return number >= 1 && number <= AddressInput::kOctets ? owner_.At(number) : nullptr;
}

void OctetEdit::Enter(Entry entry) {
  setFocus(Qt::OtherFocusReason);
  switch (entry) {
    case Entry::SelectAll:
    case Entry::Advanced:
      selectAll();
      break;
    case Entry::AtStart:
      setCursorPosition(0);
      break;
    case Entry::AtEnd:
      end(false);
      break;
  }
  advanced_ = entry == Entry::Advanced;
}

void OctetEdit::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Paste)) {
    Paste(QApplication::clipboard()->text());
  } else if (event->matches(QKeySequence::Copy)) {
    owner_.CopyAll();
  } else if (!Navigate(*event)) {
    const QString before = text();
    advanced_ = false;
    QLineEdit::keyPressEvent(event);
    if (text() != before && !event->text().isEmpty() && IsDigit(event->text().at(0))) AdvanceWhenFull();
    return;
  }
  event->accept();
}

bool OctetEdit::Navigate(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
  if (modifiers != Qt::NoModifier) return false;
  if (event.text() == QLatin1String(".") || event.text() == QLatin1String(",")) return Separator();
  switch (event.key()) {
    case Qt::Key_Left:
      return LeaveSelection(selectionStart()) || (cursorPosition() == 0 && Step(false));
    case Qt::Key_Right:
      return LeaveSelection(selectionEnd()) || (cursorPosition() == text().size() && Step(true));
    case Qt::Key_Backspace:
      return !hasSelectedText() && cursorPosition() == 0 && Step(false);
    default:
      return false;
  }
}

bool OctetEdit::LeaveSelection(int position) {
  if (!hasSelectedText()) return false;
  setCursorPosition(position);
  return true;
}

// Whoever types the separator after an octet that was full has been taken to the next one already.
bool OctetEdit::Separator() {
  OctetEdit* next = Neighbour(1);
  if (!std::exchange(advanced_, false) && !text().isEmpty() && next != nullptr) next->Enter(Entry::SelectAll);
  return true;
}

bool OctetEdit::Step(bool forward) {
  OctetEdit* neighbour = Neighbour(forward ? 1 : -1);
  if (neighbour != nullptr) neighbour->Enter(forward ? Entry::AtStart : Entry::AtEnd);
  return neighbour != nullptr;
}

void OctetEdit::AdvanceWhenFull() {
  const bool full = text().size() == kDigits || text().toInt() * 10 > kLargest;
  OctetEdit* next = Neighbour(1);
  if (full && cursorPosition() == text().size() && next != nullptr) next->Enter(Entry::Advanced);
}

void OctetEdit::Paste(const QString& text) {
  advanced_ = false;
  if (isReadOnly() || owner_.Take(*this, text.trimmed())) return;
  QApplication::beep();
}

// Texts that come past the keyboard, for instance from assistive software, pass no validator.
void OctetEdit::KeepValid() {
  const QString now = text();
  if (now.isEmpty() || ValueOf(now)) {
    valid_ = now;
    return;
  }
  const QString before = valid_;
  setText(before);
  owner_.Take(*this, now.trimmed());
}

void OctetEdit::inputMethodEvent(QInputMethodEvent* event) {
  const QString text = event->commitString();
  if (text.size() <= 1) {
    QLineEdit::inputMethodEvent(event);
    if (!text.isEmpty()) AdvanceWhenFull();
    return;
  }
  Paste(text);
  event->accept();
}

void OctetEdit::mousePressEvent(QMouseEvent* event) {
  advanced_ = false;
  QLineEdit::mousePressEvent(event);
}

void OctetEdit::mouseReleaseEvent(QMouseEvent* event) {
  const QClipboard* clipboard = QApplication::clipboard();
  if (event->button() == Qt::MiddleButton && clipboard->supportsSelection()) {
    Paste(clipboard->text(QClipboard::Selection));
    event->accept();
    return;
  }
  QLineEdit::mouseReleaseEvent(event);
}

void OctetEdit::contextMenuEvent(QContextMenuEvent* event) {
  const std::unique_ptr<QMenu> menu(createStandardContextMenu());
  for (QAction* action : menu->actions()) {
    if (action->objectName() == QLatin1String("edit-paste")) {
      action->disconnect();
      connect(action, &QAction::triggered, this, [this] { Paste(QApplication::clipboard()->text()); });
    } else if (action->objectName() == QLatin1String("edit-copy")) {
      action->disconnect();
      action->setEnabled(true);
      connect(action, &QAction::triggered, this, [this] { owner_.CopyAll(); });
    }
  }
  menu->exec(event->globalPos());
}

void OctetEdit::dropEvent(QDropEvent* event) {
  Paste(event->mimeData()->text());
  event->acceptProposedAction();
}

void OctetEdit::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
      event->reason() == Qt::ShortcutFocusReason) {
    selectAll();
  }
  owner_.update();
}

void OctetEdit::focusOutEvent(QFocusEvent* event) {
  advanced_ = false;
  QLineEdit::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) deselect();
  owner_.update();
}

bool OctetEdit::focusNextPrevChild(bool next) {
  // Back from here is back from the address, not to its own first octet.
  if (!next && number_ > 1) owner_.At(1)->setFocus(Qt::OtherFocusReason);
  return QLineEdit::focusNextPrevChild(next);
}

}  // namespace quarl::ui
