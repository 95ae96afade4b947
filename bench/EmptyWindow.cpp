#include <QApplication>
#include <QMainWindow>

#include "FirstPaint.h"

// The least that a program with a window does until it is painted.
int main(int argc, char** argv) {
  const QApplication app(argc, argv);
  QMainWindow window;
  window.resize(1000, 640);
  const quarl::bench::FirstPaint first(window);
  window.show();
  return QApplication::exec();
}
