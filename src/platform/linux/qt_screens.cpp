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

QRect primaryGeometry() {
  const QScreen* primary = QGuiApplication::primaryScreen();
  return primary ? primary->geometry() : QRect();
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
  for (const QScreen* screen : primaryFirst()) frames.push_back(frameOf(screen->geometry()));
  return frames;
}

std::optional<Rect> QtScreens::mainFrame() const {
  const auto active = session_ ? session_->activeWindow() : std::nullopt;
  const QScreen* screen = active ? screenAt(active->center()) : QGuiApplication::primaryScreen();
  if (!screen) return std::nullopt;
  return frameOf(screen->geometry());
}

Rect QtScreens::frameOf(const QRect& geometry) {
  const QRect primary = primaryGeometry();
  const QPoint corner = geometry.topLeft() - primary.topLeft();
  return {static_cast<double>(corner.x()),
          static_cast<double>(primary.height() - corner.y() - geometry.height()),
          static_cast<double>(geometry.width()), static_cast<double>(geometry.height())};
}

QRect QtScreens::geometryOf(const Rect& frame) {
  const QRect primary = primaryGeometry();
  return {primary.x() + qRound(frame.x),
          primary.y() + primary.height() - qRound(frame.y) - qRound(frame.height),
          qRound(frame.width), qRound(frame.height)};
}

Rect QtScreens::windowOf(const QRect& pixels) {
  const QScreen* screen = screenAt(pixels.center());
  const QPoint corner = screen ? screen->geometry().topLeft() : QPoint();
  const double ratio = screen ? screen->devicePixelRatio() : 1;
  const QPoint primary = primaryGeometry().topLeft();
  return {corner.x() - primary.x() + (pixels.x() - corner.x()) / ratio,
          corner.y() - primary.y() + (pixels.y() - corner.y()) / ratio, pixels.width() / ratio,
          pixels.height() / ratio};
}

}  // namespace torvane
