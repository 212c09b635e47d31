#include "platform/linux/qt_application.h"

#include <QApplication>
#include <utility>

namespace torvane {

bool QtApplication::takeActivation() {
  const bool isAsked = std::exchange(isAskedToFront_, false);
  return isAsked || QApplication::activeWindow() != nullptr;
}

void QtApplication::terminate() {
  // Ends every event loop, those of open alerts too, and none can begin again. Unlike quit() it
  // asks no window whether it agrees.
  QCoreApplication::exit(0);
}

}  // namespace torvane
