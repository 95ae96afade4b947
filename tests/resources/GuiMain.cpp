#include <gtest/gtest.h>

#include <QGuiApplication>

// Pictures need the image plug-ins of Qt's GUI library, no widgets.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QGuiApplication app(argc, argv);
  return RUN_ALL_TESTS();
}
