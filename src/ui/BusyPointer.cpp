#include "ui/BusyPointer.h"

namespace quarl::ui {

BusyPointer::BusyPointer(QWidget* window)
    : window_(window), hadCursor_(window->testAttribute(Qt::WA_SetCursor)), before_(window->cursor()) {
  window->setCursor(Qt::WaitCursor);
}

BusyPointer::~BusyPointer() {
  if (!window_) return;
  if (hadCursor_) {
    window_->setCursor(before_);
  } else {
    window_->unsetCursor();
  }
}

}  // namespace quarl::ui
