#pragma once

#include <QAbstractSpinBox>

namespace quarl::editors {

/// The failure threshold: the text "NFail" with the spin control "NFailUpDown" in one field. The spin control steps
/// from the number in the text and never leaves 1 to 10; any text can be typed. User-interface thread only.
class ThresholdInput : public QAbstractSpinBox {
 public:
  static constexpr int kMinimum = 1;
  static constexpr int kMaximum = 10;

  explicit ThresholdInput(QWidget* parent = nullptr);

  QString Text() const { return text(); }
  void SetText(const QString& text);
  /// Where the spin control stands: the number at the beginning of the text, brought to 1 to 10.
  int Value() const;

  void stepBy(int steps) override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  StepEnabled stepEnabled() const override;

 private:
  int Number() const;
};

}  // namespace quarl::editors
