#pragma once

#include <QObject>
#include <QRect>
#include <QWindow>
#include <functional>
#include <memory>

namespace torvane {

// Follows whichever of the program's own windows has the keyboard; those that never want it do not
// count, though some platforms give it to them.
class FocusedWindow {
 public:
  // Calls `onPlace` now and with each change: where that window lies with its frame, in the
  // coordinates of the desktop, and an empty rectangle when there is none.
  explicit FocusedWindow(std::function<void(const QRect& place)> onPlace);

 private:
  void follow(QWindow* window);

  std::function<void(const QRect&)> onPlace_;
  QObject context_;
  std::unique_ptr<QObject> following_;  // as long as its window has the keyboard
};

}  // namespace torvane
