// main() for the tests that need screens: three without a display. The primary one is A; B, right
// of it, has two pixels a point; C lies left of A and higher.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

namespace {

constexpr const char* kScreens = R"({"screens": [
  {"name": "A", "x": 0, "y": 0, "width": 1280, "height": 800, "logicalDpi": 96,
   "logicalBaseDpi": 96, "dpr": 1},
  {"name": "B", "x": 1280, "y": 0, "width": 1024, "height": 768, "logicalDpi": 96,
   "logicalBaseDpi": 96, "dpr": 2},
  {"name": "C", "x": -800, "y": -200, "width": 800, "height": 600, "logicalDpi": 96,
   "logicalBaseDpi": 96, "dpr": 1}]})";

}  // namespace

// What fontconfig keeps until the process ends.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QTemporaryDir folder;
  QFile file(folder.filePath("screens.json"));
  if (!file.open(QIODevice::WriteOnly) || file.write(kScreens) < 0) return 2;
  file.close();
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toUtf8());
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setQuitLockEnabled(false);
  return RUN_ALL_TESTS();
}
