#pragma once

#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace quarl::bench {

/// An application that ends the process, without any clean-up, once a window has been painted for the first time: when
/// the event in whose course that happened is over, and so all that is in the window is painted, too. What comes after
/// it (the window becomes the active one, and is painted as such) does not count. The process dies by itself after a
/// minute, should no paint come.
class FirstPaint : public QApplication {
 public:
  FirstPaint(int& argc, char** argv) : QApplication(argc, argv) { alarm(60); }
  void Await(const QWidget& window) { window_ = &window; }

  bool notify(QObject* receiver, QEvent* event) override {
    painted_ = painted_ || (receiver == window_ && event->type() == QEvent::Paint);
    ++depth_;
    const bool done = QApplication::notify(receiver, event);
    if (--depth_ == 0 && painted_) _exit(0);
    return done;
  }

 private:
  const QWidget* window_ = nullptr;
  int depth_ = 0;
  bool painted_ = false;
};

}  // namespace quarl::bench
