#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>

#include "ink/overlay_view.h"
#include "platform/linux/ink_shape.h"
#include "platform/linux/qt_canvas.h"
#include "platform/linux/window_shape.h"
#include "ports/clock.h"

namespace torvane {

// The overlay's window: shows the view, lets clicks through, and cuts itself to the shape of the
// ink where nothing can make windows translucent.
class OverlayWidget final : public QWidget, private OverlayDisplay {
 public:
  OverlayWidget(OverlayView& content, const Clock& clock, std::unique_ptr<WindowShape> shape);
  ~OverlayWidget() override;

  void setTranslucent(bool isTranslucent);

  // No ink is shown there, in the coordinates of the desktop.
  void setHole(const QRect& hole);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void invalidate(const Rect& viewPart) override;
  void paintPart(const QRect& dirty);
  void leaveOut(const QRect& part);
  void applyShape();

  OverlayView& content_;
  const Clock& clock_;
  QRect hole_;        // in the coordinates of the desktop
  QRect asked_;       // since the last painting
  QTimer soon_;       // fires when other events had their turn
  double ratio_ = 0;  // pixels per point when it was last painted
  bool isTranslucent_ = true;
  InkShape ink_;  // while not translucent
  std::unique_ptr<WindowShape> shape_;
};

}  // namespace torvane
