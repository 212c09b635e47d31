#include "platform/linux/focused_window.h"

#include <QGuiApplication>
#include <utility>

namespace torvane {

FocusedWindow::FocusedWindow(std::function<void(const QRect& place)> onPlace)
    : onPlace_(std::move(onPlace)) {
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &context_,
                   [this](QWindow* window) { follow(window); });
  follow(QGuiApplication::focusWindow());
}

// A window that is closed does not always say first that the keyboard has left it.
void FocusedWindow::follow(QWindow* window) {
  following_ = std::make_unique<QObject>();
  if (!window || window->flags().testFlag(Qt::WindowDoesNotAcceptFocus)) return onPlace_({});
  const auto tell = [this, window] {
    onPlace_(window->isVisible() ? window->frameGeometry() : QRect());
  };
  for (const auto change :
       {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged}) {
    QObject::connect(window, change, following_.get(), tell);
  }
  QObject::connect(window, &QWindow::visibleChanged, following_.get(), tell);
  tell();
}

}  // namespace torvane
