#include "platform/mac/mac_canvas.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <cstring>

#include "platform/mac/mac_geometry.h"

namespace torvane {
namespace {

constexpr long kBytesPerPixel = 4;

CGContextRef makeContext(long width, long height) {
  const CFOwned<CGColorSpaceRef> colours(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  return CGBitmapContextCreate(nullptr, static_cast<std::size_t>(width),
                               static_cast<std::size_t>(height), 8, 0, colours.get(),
                               static_cast<std::uint32_t>(kCGImageAlphaPremultipliedFirst) |
                                   static_cast<std::uint32_t>(kCGImageByteOrder32Little));
}

// The frameworks draw pictures from their bottom line up; our y grows downwards.
void drawUpright(CGContextRef context, CGImageRef image, const Rect& into) {
  CGContextSaveGState(context);
  CGContextTranslateCTM(context, into.x, into.bottom());
  CGContextScaleCTM(context, 1, -1);
  CGContextDrawImage(context, CGRectMake(0, 0, into.width, into.height), image);
  CGContextRestoreGState(context);
}

}  // namespace

MacCanvas::MacCanvas(const Rect& area, double scale) : scale_(scale), pixels_(toPixels(area)) {
  if (pixels_.width <= 0 || pixels_.height <= 0) return;
  context_ = CFOwned<CGContextRef>(makeContext(pixels_.width, pixels_.height));
  if (!context_) return;
  // From pixels that count upwards to points of the view that count downwards.
  CGContextTranslateCTM(context_.get(), static_cast<CGFloat>(-pixels_.x),
                        static_cast<CGFloat>(pixels_.y + pixels_.height));
  CGContextScaleCTM(context_.get(), scale_, -scale_);
}

MacCanvas::PixelRect MacCanvas::toPixels(const Rect& area) const {
  const Rect whole =
      widenedToWhole({area.x * scale_, area.y * scale_, area.width * scale_, area.height * scale_});
  return {static_cast<long>(whole.x), static_cast<long>(whole.y), static_cast<long>(whole.width),
          static_cast<long>(whole.height)};
}

void MacCanvas::drawPicture(const Picture& picture, const Rect& into) {
  if (!context_ || into.isEmpty()) return;
  CGContextSetInterpolationQuality(context_.get(), kCGInterpolationHigh);
  drawUpright(context_.get(), static_cast<const MacPicture&>(picture).image(), into);
}

void MacCanvas::strokeLines(const Lines& lines, double width) {
  if (!context_) return;
  CGContextRef context = context_.get();
  CGContextSetStrokeColorWithColor(context, [NSColor systemRedColor].CGColor);
  CGContextSetLineWidth(context, width);
  CGContextSetLineCap(context, kCGLineCapRound);
  CGContextSetLineJoin(context, kCGLineJoinRound);
  CGContextBeginPath(context);
  std::size_t line = 0;
  for (std::size_t i = 0; i < lines.points.size(); ++i) {
    const Point& point = lines.points[i];
    if (line < lines.starts.size() && lines.starts[line] == i) {
      CGContextMoveToPoint(context, point.x, point.y);
      ++line;
    } else {
      CGContextAddLineToPoint(context, point.x, point.y);
    }
  }
  CGContextStrokePath(context);
}

void MacCanvas::fillOval(const Rect& bounds, double opacity) {
  if (!context_) return;
  NSColor* colour = [[NSColor systemRedColor] colorWithAlphaComponent:opacity];
  CGContextSetFillColorWithColor(context_.get(), colour.CGColor);
  CGContextFillEllipseInRect(context_.get(), toCGRect(bounds));
}

std::unique_ptr<Canvas> MacCanvas::makeLayer(const Rect& area) const {
  return std::make_unique<MacCanvas>(area, scale_);
}

std::uint8_t* MacCanvas::pixelAt(long x, long y) const {
  auto* first = static_cast<std::uint8_t*>(CGBitmapContextGetData(context_.get()));
  const auto row = static_cast<long>(CGBitmapContextGetBytesPerRow(context_.get()));
  return first + (y - pixels_.y) * row + (x - pixels_.x) * kBytesPerPixel;
}

void MacCanvas::copyLayer(const Canvas& layer, const Rect& area) {
  const auto& source = static_cast<const MacCanvas&>(layer);
  if (!context_ || !source.context_) return;
  const PixelRect wanted = toPixels(area);
  const auto overlap = [&](long PixelRect::*at, long PixelRect::*size) {
    const long from = std::max({wanted.*at, pixels_.*at, source.pixels_.*at});
    const long to = std::min({wanted.*at + wanted.*size, pixels_.*at + pixels_.*size,
                              source.pixels_.*at + source.pixels_.*size});
    return std::pair(from, to);
  };
  const auto [left, right] = overlap(&PixelRect::x, &PixelRect::width);
  const auto [top, bottom] = overlap(&PixelRect::y, &PixelRect::height);
  if (left >= right) return;
  const auto bytes = static_cast<std::size_t>((right - left) * kBytesPerPixel);
  for (long y = top; y < bottom; ++y) {
    std::memcpy(pixelAt(left, y), source.pixelAt(left, y), bytes);
  }
}

void MacCanvas::copyTo(CGContextRef context) const {
  if (!context_) return;
  const CFOwned<CGImageRef> image(CGBitmapContextCreateImage(context_.get()));
  if (!image) return;
  CGContextSaveGState(context);
  CGContextSetBlendMode(context, kCGBlendModeCopy);
  CGContextSetInterpolationQuality(context, kCGInterpolationNone);
  drawUpright(
      context, image.get(),
      {static_cast<double>(pixels_.x) / scale_, static_cast<double>(pixels_.y) / scale_,
       static_cast<double>(pixels_.width) / scale_, static_cast<double>(pixels_.height) / scale_});
  CGContextRestoreGState(context);
}

}  // namespace torvane
