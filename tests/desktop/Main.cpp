#include <gtest/gtest.h>

#include <QApplication>

// One application for all tests, drawn into memory: no screen, no window manager.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("LC_ALL", "C.UTF-8");
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
