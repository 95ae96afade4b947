#include <QMainWindow>

#include "FirstPaint.h"

// The least that a program with a window does until it is painted.
int main(int argc, char** argv) {
  quarl::bench::FirstPaint app(argc, argv);
  QMainWindow window;
  window.resize(1000, 640);
  app.Await(window);
  window.show();
  return QApplication::exec();
}
