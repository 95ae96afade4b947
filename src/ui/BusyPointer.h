#pragma once

#include <QPointer>
#include <QWidget>

namespace quarl::ui {

/// Shows the hourglass over a window while it lives, and then what was there before. Message boxes and dialogs over
/// the window keep their own pointer.
class BusyPointer {
 public:
  explicit BusyPointer(QWidget* window);
  ~BusyPointer();
  BusyPointer(const BusyPointer&) = delete;
  BusyPointer& operator=(const BusyPointer&) = delete;

 private:
  QPointer<QWidget> window_;
  bool hadCursor_;
  QCursor before_;
};

}  // namespace quarl::ui
