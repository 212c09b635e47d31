#pragma once

#import <CoreGraphics/CoreGraphics.h>

#include "platform/mac/cf_ref.h"
#include "ports/canvas.h"

namespace torvane {

class MacPicture final : public Picture {
 public:
  explicit MacPicture(CFOwned<CGImageRef> image) : image_(std::move(image)) {}

  [[nodiscard]] CGImageRef image() const { return image_.get(); }

 private:
  CFOwned<CGImageRef> image_;
};

// Premultiplied pixels for a part of the view.
class MacCanvas final : public Canvas {
 public:
  // `scale` is pixels per point; `area`, in points, is widened to whole pixels. A canvas that gets
  // no memory stays empty.
  MacCanvas(const Rect& area, double scale);

  [[nodiscard]] double pixelsPerPoint() const override { return scale_; }
  void drawPicture(const Picture& picture, const Rect& into) override;
  void strokeLines(const Lines& lines, double width) override;
  void fillOval(const Rect& bounds, double opacity) override;
  [[nodiscard]] std::unique_ptr<Canvas> makeLayer(const Rect& area) const override;
  void copyLayer(const Canvas& layer, const Rect& area) override;

  // Replaces what `context` shows, which has the view's own coordinates.
  void copyTo(CGContextRef context) const;

 private:
  struct PixelRect {
    long x = 0, y = 0, width = 0, height = 0;
  };

  [[nodiscard]] PixelRect toPixels(const Rect& area) const;
  [[nodiscard]] std::uint8_t* pixelAt(long x, long y) const;

  double scale_;
  PixelRect pixels_;  // of the view, from its top left
  CFOwned<CGContextRef> context_;
};

}  // namespace torvane
