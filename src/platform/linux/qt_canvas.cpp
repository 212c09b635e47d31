#include "platform/linux/qt_canvas.h"

#include <QPainter>
#include <cstring>
#include <utility>

namespace torvane {
namespace {

// The system red. Opaque, so that a premultiplied pixel of it is the colour itself.
const QColor kInk(255, 59, 48);

QImage scaled(const QImage& image, const QSize& size) {
  if (image.size() == size) return image;
  return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
      .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// At fractions of a pixel in two steps, as QPainter looks at four pixels alone, which is too few of
// a large picture. The first is one pixel too large: QPainter would round the place of a picture
// that it need not scale.
PlacedPixels laidOut(const QImage& image, const QRectF& place) {
  const QRect touched = place.toAlignedRect();
  if (QRectF(touched) == place) return {touched.topLeft(), scaled(image, touched.size())};
  QImage laid(touched.size(), QImage::Format_ARGB32_Premultiplied);
  laid.fill(Qt::transparent);
  QPainter painter(&laid);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  painter.drawImage(place.translated(-touched.topLeft()),
                    scaled(image, touched.size() + QSize(1, 1)));
  painter.end();
  return {touched.topLeft(), std::move(laid)};
}

}  // namespace

PlacedPixels QtPicture::laidInto(const QRectF& place) const {
  const std::lock_guard lock(mutex_);
  if (place != place_) {
    place_ = place;
    laid_ = laidOut(image_, place);
  }
  return laid_;
}

QtCanvas::QtCanvas(const Rect& area, double scale)
    : scale_(scale),
      pixels_(toPixels(area)),
      image_(pixels_.size(), QImage::Format_ARGB32_Premultiplied) {
  image_.fill(Qt::transparent);
}

QRect QtCanvas::toPixels(const Rect& area) const {
  const Rect whole =
      widenedToWhole({area.x * scale_, area.y * scale_, area.width * scale_, area.height * scale_});
  return {static_cast<int>(whole.x), static_cast<int>(whole.y), static_cast<int>(whole.width),
          static_cast<int>(whole.height)};
}

void QtCanvas::drawPicture(const Picture& picture, const Rect& into) {
  if (into.isEmpty()) return;
  const auto& source = static_cast<const QtPicture&>(picture);
  const PlacedPixels laid = source.laidInto(
      {into.x * scale_, into.y * scale_, into.width * scale_, into.height * scale_});
  QPainter painter(&image_);
  painter.drawImage(laid.at - origin(), laid.pixels);
}

void QtCanvas::strokeLines(const Lines& lines, double width) {
  if (image_.isNull()) return;
  if (!coverage_) {
    coverage_.emplace(pixels_.x(), pixels_.y(), pixels_.width(), pixels_.height());
  }
  coverage_->setPenWidth(width * scale_);
  const auto& points = lines.points;
  std::size_t line = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (line < lines.starts.size() && lines.starts[line] == i) {
      ++line;
      continue;
    }
    const Point from = points[i - 1], to = points[i];
    coverage_->addLine(from.x * scale_, from.y * scale_, to.x * scale_, to.y * scale_);
  }
  coverage_->take([this](int x, int y, const float* coverage, int count) {
    auto* row = reinterpret_cast<std::uint32_t*>(image_.scanLine(y - pixels_.y()));
    blend(row + (x - pixels_.x()), coverage, count, kInk.rgba());
  });
}

void QtCanvas::fillOval(const Rect& bounds, double opacity) {
  QColor colour = kInk;
  colour.setAlphaF(static_cast<float>(opacity));
  QPainter painter(&image_);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(-origin());
  painter.scale(scale_, scale_);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawEllipse(QRectF(bounds.x, bounds.y, bounds.width, bounds.height));
}

std::unique_ptr<Canvas> QtCanvas::makeLayer(const Rect& area) const {
  return std::make_unique<QtCanvas>(area, scale_);
}

void QtCanvas::copyLayer(const Canvas& layer, const Rect& area) {
  const auto& source = static_cast<const QtCanvas&>(layer);
  const QRect part = toPixels(area) & pixels_ & source.pixels_;
  if (part.isEmpty()) return;
  const auto offset = [&](const QtCanvas& canvas) {
    return static_cast<std::size_t>(part.x() - canvas.pixels_.x()) * sizeof(QRgb);
  };
  const std::size_t bytes = static_cast<std::size_t>(part.width()) * sizeof(QRgb);
  for (int y = part.y(); y <= part.bottom(); ++y) {
    std::memcpy(image_.scanLine(y - pixels_.y()) + offset(*this),
                source.image_.constScanLine(y - source.pixels_.y()) + offset(source), bytes);
  }
}

}  // namespace torvane
