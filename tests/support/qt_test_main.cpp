// main() for the tests that need a Qt application: one without a display.

#include <gtest/gtest.h>

#include <QApplication>

// What fontconfig keeps until the process ends.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setQuitLockEnabled(false);
  return RUN_ALL_TESTS();
}
