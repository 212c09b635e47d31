#include "platform/linux/symbol_icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <optional>

namespace torvane {
namespace {

// Shapes are drawn in a square of this side.
constexpr qreal kSide = 24;
constexpr qreal kStroke = 2.2;
constexpr qreal kRim = 1.2;
constexpr qreal kRimOpacity = 0.85;
constexpr qreal kDimmedOpacity = 0.85;  // some trays apply it twice

QPainterPath dot(QPointF centre) {
  QPainterPath path;
  path.addEllipse(centre, 0.9, 0.9);  // its outline makes it larger
  return path;
}

QPainterPath wave(QPointF centre, qreal radius, qreal middleAngle) {
  constexpr qreal kHalfOpening = 42;
  const QRectF circle(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
  QPainterPath path;
  path.arcMoveTo(circle, middleAngle - kHalfOpening);
  path.arcTo(circle, middleAngle - kHalfOpening, 2 * kHalfOpening);
  return path;
}

std::optional<QPainterPath> symbolShape(const std::string& name) {
  constexpr qreal kRight = 0;
  constexpr qreal kLeft = 180;
  if (name == "dot.radiowaves.right") {
    const QPointF centre(5.5, 12);
    QPainterPath path = dot(centre);
    for (const qreal radius : {5.4, 9.9, 14.4}) path.addPath(wave(centre, radius, kRight));
    return path;
  }
  if (name == "dot.radiowaves.left.and.right") {
    const QPointF centre(12, 12);
    QPainterPath path = dot(centre);
    for (const qreal radius : {5.2, 9.7}) {
      path.addPath(wave(centre, radius, kRight));
      path.addPath(wave(centre, radius, kLeft));
    }
    return path;
  }
  return std::nullopt;
}

QPen penOf(const QColor& colour, qreal width) {
  return {colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

// A line from corner to corner.
QPainterPath slash() {
  constexpr qreal kInset = 3;
  QPainterPath path(QPointF(kInset, kInset));
  path.lineTo(kSide - kInset, kSide - kInset);
  return path;
}

void drawRimmed(QPainter& painter, const QPainterPath& shape, const QPalette& palette) {
  QColor rim = palette.color(QPalette::Window);
  rim.setAlphaF(static_cast<float>(kRimOpacity));
  painter.strokePath(shape, penOf(rim, kStroke + 2 * kRim));
  painter.strokePath(shape, penOf(palette.color(QPalette::WindowText), kStroke));
}

QPixmap symbolPixmap(const QPainterPath& shape, const QPalette& palette, bool isCrossedOut,
                     int side) {
  QPixmap pixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(side / kSide, side / kSide);
  drawRimmed(painter, shape, palette);
  if (isCrossedOut) drawRimmed(painter, slash(), palette);
  return pixmap;
}

QPixmap dimmed(const QPixmap& source) {
  QPixmap result(source.size());
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.setOpacity(kDimmedOpacity);
  painter.drawPixmap(0, 0, source);
  return result;
}

}  // namespace

QIcon symbolIcon(const std::string& symbolName, const QPalette& palette, bool isDimmed) {
  QIcon icon;
  const auto shape = symbolShape(symbolName);
  if (!shape) return icon;
  for (const int side : {16, 22, 24, 32, 44, 48, 64}) {
    const QPixmap pixmap = symbolPixmap(*shape, palette, isDimmed, side);
    icon.addPixmap(isDimmed ? dimmed(pixmap) : pixmap);
  }
  return icon;
}

}  // namespace torvane
