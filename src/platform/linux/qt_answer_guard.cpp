#include "platform/linux/qt_answer_guard.h"

#include <QKeyEvent>
#include <QWindow>

#include "platform/linux/qt_x11.h"

namespace torvane {
namespace {

bool isKey(QEvent::Type type) {
  return type == QEvent::KeyPress || type == QEvent::KeyRelease;
}

bool isClick(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      return true;
    default:
      return false;
  }
}

}  // namespace

QtAnswerGuard::QtAnswerGuard(QDialog& alert) {
  clock_.start();
  looks_.setInterval(static_cast<int>(AnswerGuard::kLookInterval * 1000));
  looks_.setTimerType(Qt::PreciseTimer);
  connect(&looks_, &QTimer::timeout, this, [this] { look(); });
  alert.winId();  // makes the window
  alert.windowHandle()->installEventFilter(this);
  alert.installEventFilter(this);
}

bool QtAnswerGuard::eventFilter(QObject* watched, QEvent* event) {
  if (!watched->isWindowType()) return holdsBackClosing(*event);
  const auto type = event->type();
  if (type == QEvent::Expose && !isShown_ && static_cast<QWindow*>(watched)->isExposed()) {
    isShown_ = true;
    guard_.didShow(now());
    looks_.start();
  } else if (type == QEvent::FocusIn) {
    guard_.didGetKeyboard(now());
    looks_.start();
  }
  if (isKey(type)) return !guard_.takesKeys(static_cast<QKeyEvent*>(event)->isAutoRepeat());
  return isClick(type) && !guard_.takesClicks();
}

// The window manager's wish comes of a click on the frame, as a rule. A dialog that was answered
// closes its window as well, but hears nothing of that itself.
bool QtAnswerGuard::holdsBackClosing(QEvent& event) const {
  if (event.type() != QEvent::Close || guard_.takesClicks()) return false;
  event.ignore();
  return true;
}

void QtAnswerGuard::look() {
  guard_.look(now(), isInputHeld());
  if (!guard_.needsLooks()) looks_.stop();
}

}  // namespace torvane
