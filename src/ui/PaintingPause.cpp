#include "ui/PaintingPause.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

namespace quarl::ui {
namespace {

int depth = 0;

}  // namespace

void PaintingPause::Run(int ms) {
  ++depth;
  QEventLoop loop;
  QTimer::singleShot(ms, &loop, &QEventLoop::quit);
  QElapsedTimer elapsed;
  elapsed.start();
  loop.exec(QEventLoop::ExcludeUserInputEvents);
  // While the program quits, no event loop begins any more.
  if (const qint64 left = ms - elapsed.elapsed(); left > 0) QThread::msleep(static_cast<unsigned long>(left));
  --depth;
}

bool PaintingPause::IsOn() {
  return depth > 0;
}

}  // namespace quarl::ui
