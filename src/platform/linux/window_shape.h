#pragma once

#include <QImage>
#include <QPoint>
#include <QWindow>
#include <memory>

namespace torvane {

// Which pixels of a window are there at all, where nothing can make windows translucent. Bits are
// bitmaps for the X server, which have no limit. (Lists of rectangles have one: those of more than
// a request holds, as many as 200 strokes of 100 points have, leave an empty shape and no error.)
// Changes hold before anything is painted that is asked for later. Main thread only.
class WindowShape {
 public:
  virtual ~WindowShape() = default;

  virtual void makeWhole(QWindow& window) = 0;
  // Nothing but the pixels from the top left corner on whose bits are set.
  virtual void set(QWindow& window, const QImage& bits) = 0;
  // Those from `at` on as well.
  virtual void add(QWindow& window, const QPoint& at, const QImage& bits) = 0;
};

// Does nothing on a platform of Qt's that is not X11.
[[nodiscard]] std::unique_ptr<WindowShape> makeX11WindowShape();

}  // namespace torvane
