#pragma once

#include <unistd.h>

#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace quarl::bench {

/// Ends the process, without any clean-up, once a window and all that is in it have been painted for the first time.
/// The process dies by itself after a minute, should that never happen.
class FirstPaint : public QObject {
 public:
  explicit FirstPaint(QWidget& window) {
    alarm(60);
    window.installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) QTimer::singleShot(0, this, [] { _exit(0); });
    return QObject::eventFilter(watched, event);
  }
};

}  // namespace quarl::bench
