#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleFactory>

#include "support/RunTests.h"

// The main() of test programs with widgets.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QApplication app(argc, argv);
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Console"));
  QApplication::setQuitOnLastWindowClosed(false);
  return quarl::test::RunTests();
}
