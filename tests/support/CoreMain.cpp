#include <gtest/gtest.h>

#include <QCoreApplication>

#include "support/RunTests.h"

// The main() of test programs without widgets; a program that brings its own is linked with that one instead.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QCoreApplication app(argc, argv);
  return quarl::test::RunTests();
}
