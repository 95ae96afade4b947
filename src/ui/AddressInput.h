#pragma once

#include <QLineEdit>
#include <QString>
#include <QWidget>
#include <array>

namespace quarl::ui {

class OctetEdit;

/// The input of an IPv4 address: four octets, each 0 to 255 or empty, in one field. Digits that leave no room for
/// another one, "." and "," and the arrow keys go on to the next octet, Backspace at the beginning of one goes back.
/// A whole address pasted into any octet fills all four; what is neither an address nor an octet's number is refused
/// and changes nothing. Copying gives the whole address. One tab stop. User-interface thread only.
class AddressInput : public QWidget {
 public:
  static constexpr int kOctets = 4;

  explicit AddressInput(QWidget* parent = nullptr);

  /// The address with its octets in plain decimal; an empty octet counts as 0.
  QString Text() const;
  /// Puts part k of a dotted text, counted from 0, into octet k + 1; an empty text changes nothing.
  /// Throws Error at the first part that is no whole number from 0 to 255 and at a fifth part; the parts before it
  /// have been put into their octets then.
  void SetText(const QString& dotted);
  /// @param number 1 to 4; an empty octet counts as 0.
  int Octet(int number) const;
  /// Throws Error for a value outside 0 to 255 or a number outside 1 to 4.
  void SetOctet(int number, int value);
  /// True when no octet has a digit.
  bool IsBlank() const;
  void Clear();

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  friend class OctetEdit;
  OctetEdit* At(int number) const;
  void FitToFont();
  void CopyAll() const;
  /// Takes a text from outside as a whole address or as one octet's number. False: it is neither.
  bool Take(OctetEdit& octet, const QString& text);

  std::array<OctetEdit*, kOctets> octets_{};
};

}  // namespace quarl::ui
