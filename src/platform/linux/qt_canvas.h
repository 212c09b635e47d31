#pragma once

#include <QImage>
#include <QPoint>
#include <QRectF>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/line_coverage.h"
#include "ports/canvas.h"

namespace torvane {

// Pixels and where the first of them lies.
struct PlacedPixels {
  QPoint at;
  QImage pixels;
};

// A decoded picture. How it was last drawn is kept.
class QtPicture final : public Picture {
 public:
  explicit QtPicture(QImage image) : image_(std::move(image)) {}

  [[nodiscard]] const QImage& image() const { return image_; }

  // Stretched into a place that may begin and end at fractions of a pixel: the pixels at its edges
  // are as translucent as they are outside of it.
  [[nodiscard]] PlacedPixels laidInto(const QRectF& place) const;

 private:
  QImage image_;
  mutable std::mutex mutex_;
  mutable QRectF place_;
  mutable PlacedPixels laid_;
};

// Premultiplied pixels for a part of the view. Pictures and ovals are QPainter's; lines are
// covered by LineCoverage, because QPainter takes five times as long for them and is not the same
// to the pixel where a part is painted anew.
class QtCanvas final : public Canvas {
 public:
  // `scale` is pixels per point; `area`, in points, is widened to whole pixels.
  QtCanvas(const Rect& area, double scale);

  [[nodiscard]] double pixelsPerPoint() const override { return scale_; }
  void drawPicture(const Picture& picture, const Rect& into) override;
  void strokeLines(const Lines& lines, double width) override;
  void fillOval(const Rect& bounds, double opacity) override;
  [[nodiscard]] std::unique_ptr<Canvas> makeLayer(const Rect& area) const override;
  void copyLayer(const Canvas& layer, const Rect& area) override;

  // The pixels, and where the first of them lies in the view, in pixels.
  [[nodiscard]] const QImage& image() const { return image_; }
  [[nodiscard]] QPoint origin() const { return pixels_.topLeft(); }

 private:
  [[nodiscard]] QRect toPixels(const Rect& area) const;

  double scale_;
  QRect pixels_;
  QImage image_;
  std::optional<LineCoverage> coverage_;  // made for the first line
};

}  // namespace torvane
