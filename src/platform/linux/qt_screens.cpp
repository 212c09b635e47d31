#include "platform/linux/qt_screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace torvane {
namespace {

QList<QScreen*> primaryFirst() {
  QList<QScreen*> screens = QGuiApplication::screens();
  const auto primary = std::find(screens.begin(), screens.end(), QGuiApplication::primaryScreen());
  if (primary != screens.end()) std::rotate(screens.begin(), primary, primary + 1);
  return screens;
}

Rect rectOf(const QRect& rect) {
  return {static_cast<double>(rect.x()), static_cast<double>(rect.y()),
          static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

// Qt keeps the place of a screen's corner in pixels and divides only its size.
QRect pixelsOf(const QScreen& screen) {
  const QRect points = screen.geometry();
  const double ratio = screen.devicePixelRatio();
  return {points.topLeft(), QSize(qRound(points.width() * ratio), qRound(points.height() * ratio))};
}

QScreen* screenAt(const QPoint& pixel) {
  for (QScreen* screen : primaryFirst()) {
    if (pixelsOf(*screen).contains(pixel)) return screen;
  }
  return QGuiApplication::primaryScreen();
}

}  // namespace

std::vector<Rect> QtScreens::frames() const {
  std::vector<Rect> frames;
  for (const QScreen* screen : primaryFirst())
    frames.push_back(flipped(rectOf(screen->geometry())));
  return frames;
}

std::optional<Rect> QtScreens::mainFrame() const {
  const auto active = session_ ? session_->activeWindow() : std::nullopt;
  const QScreen* screen = active ? screenAt(active->center()) : QGuiApplication::primaryScreen();
  if (!screen) return std::nullopt;
  return flipped(rectOf(screen->geometry()));
}

Rect QtScreens::flipped(const Rect& rect) {
  const QScreen* primary = QGuiApplication::primaryScreen();
  const double height = primary ? primary->geometry().height() : 0;
  return {rect.x, height - rect.bottom(), rect.width, rect.height};
}

QRect QtScreens::geometryOf(const Rect& frame) {
  const Rect rect = flipped(frame);
  return {qRound(rect.x), qRound(rect.y), qRound(rect.width), qRound(rect.height)};
}

Rect QtScreens::pointsFromPixels(const QRect& pixels) {
  const QScreen* screen = screenAt(pixels.center());
  if (!screen) return rectOf(pixels);
  const QPoint corner = screen->geometry().topLeft();
  const double ratio = screen->devicePixelRatio();
  return {corner.x() + (pixels.x() - corner.x()) / ratio,
          corner.y() + (pixels.y() - corner.y()) / ratio, pixels.width() / ratio,
          pixels.height() / ratio};
}

}  // namespace torvane
