#pragma once

#include <QLabel>
#include <QTimer>
#include <QWidget>

#include "ui/ErrorTrap.h"

namespace quarl::shell {

/// The start-up window: logo, version and copyright. It goes away and deletes itself after four seconds of the event
/// loop, or when a key is pressed in it.
class frmSplash : public QWidget {
 public:
  explicit frmSplash(QWidget* parent = nullptr);
  /// Shows the window and has it painted before it returns. The four seconds begin here.
  void ShowAtOnce();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Form_Load();
  void closeTimer_Timer();
  void Form_KeyPress();
  void PlaceTexts(const QSize& size);

  ui::ErrorTrap trap_;
  QLabel* imgLogo_;
  QLabel* lblVersion_;
  QLabel* lblCopyright_;
  QTimer* closeTimer_;
};

}  // namespace quarl::shell
