#pragma once

#include <QLineEdit>
#include <QString>
#include <optional>

namespace quarl::ui {

class AddressInput;

/// One octet of an address input. It belongs to the input and hands everything that concerns more than its own digits
/// over to it.
class OctetEdit : public QLineEdit {
 public:
  enum class Entry { SelectAll, AtStart, AtEnd, Advanced };

  /// @param number 1 to 4.
  OctetEdit(AddressInput& owner, int number);

  /// The number that a text stands for; nothing for other texts than one to three digits up to 255.
  static std::optional<int> ValueOf(const QString& text);
  /// Takes the focus.
  void Enter(Entry entry);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool focusNextPrevChild(bool next) override;

 private:
  bool Navigate(const QKeyEvent& event);
  bool LeaveSelection(int position);
  bool Separator();
  bool Step(bool forward);
  void AdvanceWhenFull();
  void Paste(const QString& text);
  void KeepValid();
  OctetEdit* Neighbour(int step) const;

  AddressInput& owner_;
  int number_;
  QString valid_;          // the last text that was empty or a number
  bool advanced_ = false;  // the focus came because the octet before was full, and no key was pressed since
};

}  // namespace quarl::ui
