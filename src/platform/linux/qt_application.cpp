#include "platform/linux/qt_application.h"

#include <QApplication>
#include <QWidget>

namespace torvane {

void QtApplication::activateIgnoringOtherApps() {
  // The program's only windows are its alerts; one that is not open yet comes to the front itself.
  QWidget* alert = QApplication::activeModalWidget();
  if (alert == nullptr) return;
  alert->raise();
  alert->activateWindow();
}

void QtApplication::terminate() {
  // Ends every event loop, those of open alerts too, and none can begin again. Unlike quit() it
  // asks no window whether it agrees.
  QCoreApplication::exit(0);
}

}  // namespace torvane
