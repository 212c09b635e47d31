#include "ink/overlay_view.h"

#include <unordered_set>
#include <utility>

namespace torvane {
namespace {

constexpr double kLaserFullTime = 0.4;
constexpr double kLaserGoneAfter = 0.9;
constexpr double kHaloScale = 1.8;

Rect squareAround(const Point& centre, double radius) {
  return {centre.x - radius, centre.y - radius, 2 * radius, 2 * radius};
}

// Grows by a quarter where a vector would double: ink is kept for the length of a talk.
void appendTightly(std::vector<Point>& points, const Point& point) {
  if (points.size() == points.capacity()) points.reserve(points.size() + points.size() / 4 + 4);
  points.push_back(point);
}

}  // namespace

void OverlayView::begin(std::int64_t id, const Point& point) {
  spoilStroke(id);
  auto& stroke = strokes[id];
  stroke.assign(1, point);
  order.push_back(id);
  index_.begin(id, stroke);
}

void OverlayView::append(std::int64_t id, const Point& point) {
  const auto found = strokes.find(id);
  if (found == strokes.end()) return;
  spoilBetween(found->second.back(), point);
  appendTightly(found->second, point);
  index_.extend(id, point);
}

void OverlayView::remove(const std::vector<std::int64_t>& ids) {
  std::unordered_set<std::int64_t> gone;
  for (const std::int64_t id : ids) {
    if (!strokes.contains(id) || !gone.insert(id).second) continue;
    spoilStroke(id);
  }
  if (gone.empty()) return;
  std::erase_if(order, [&](std::int64_t id) { return gone.contains(id); });
  layer_.didRemovePlaces(index_.remove(gone, layer_.nextPlace()));
  for (const std::int64_t id : gone) strokes.erase(id);
}

void OverlayView::clearInk() {
  strokes.clear();
  order.clear();
  index_.clear();
  laser.reset();
  layer_.spoilAll(bounds());
}

void OverlayView::placeLaser(const Point& point, double now) {
  laser = point;
  laserAt = now;
}

void OverlayView::setAspect(double ratio) {
  const bool isSame = ratio == aspect;
  aspect = ratio;
  if (!isSame) layer_.spoilAll(bounds());
}

void OverlayView::setOverlayImage(std::shared_ptr<const Picture> picture) {
  if (picture == overlayImage) return;
  overlayImage = std::move(picture);
  layer_.spoilAll(bounds());
}

void OverlayView::setNeedsDisplay() {
  if (!display_) return;
  for (const Rect& area : layer_.spoiled()) display_->invalidate(area);
  display_->invalidate(laserShown_);
  const auto slide = drawnSlide();
  if (slide && laser) display_->invalidate(laserArea(*slide));
}

void OverlayView::wipeFadedLaser(double mediaTime) {
  const bool isGone = !isLaserAlive(mediaTime) && !laserShown_.isEmpty();
  if (display_ && isGone) display_->invalidate(laserShown_);
}

bool OverlayView::isLaserAlive(double mediaTime) const {
  return laser && mediaTime - laserAt < kLaserGoneAfter;
}

bool OverlayView::showsLaser(double mediaTime) const {
  return isLaserAlive(mediaTime) || !laserShown_.isEmpty();
}

Rect OverlayView::slideRect() const {
  const double limit = height_ / aspect;
  const double w = limit < width_ ? limit : width_;
  const double h = aspect * w;
  return {(width_ - w) * 0.5, (height_ - h) * 0.5, w, h};
}

// None where the aspect makes no place of it, or one of negative size: then nothing is drawn.
std::optional<Rect> OverlayView::drawnSlide() const {
  const Rect slide = slideRect();
  if (!slide.isFinite() || slide.width < 0 || slide.height < 0) return std::nullopt;
  return slide;
}

Rect OverlayView::laserArea(const Rect& slide) const {
  const SlideMapping mapping(slide);
  const Rect halo = squareAround(mapping.map(*laser), kHaloScale * mapping.laserRadius());
  return halo.isFinite() ? intersected(widenedToWhole(outset(halo, 1)), bounds()) : Rect{};
}

void OverlayView::setDisplay(OverlayDisplay* display) {
  display_ = display;
}

void OverlayView::setSize(double width, double height) {
  if (width == width_ && height == height_) return;
  width_ = width;
  height_ = height;
  discardLayer();
}

void OverlayView::discardLayer() {
  layer_.discard();
  laserShown_ = {};
  if (display_) display_->invalidate(bounds());
}

void OverlayView::draw(Canvas& canvas, const Rect& dirty, double mediaTime) {
  if (contains(dirty, laserShown_)) laserShown_ = {};
  const auto slide = drawnSlide();
  if (!slide || bounds().isEmpty()) return;
  const InkScene scene{index_, overlayImage.get(), *slide, bounds()};
  for (const Rect& area : layer_.repair(canvas, scene)) {
    if (display_ && !contains(dirty, area)) display_->invalidate(area);
  }
  layer_.copyTo(canvas, dirty);
  if (display_ && !layer_.isSettled()) display_->invalidate(layer_.nextArea());
  drawLaser(canvas, *slide, mediaTime);
  if (isLaserAlive(mediaTime)) laserShown_ = united(laserShown_, laserArea(*slide));
}

void OverlayView::drawPlainly(Canvas& canvas, double mediaTime) const {
  const auto slide = drawnSlide();
  if (!slide || bounds().isEmpty()) return;
  if (overlayImage) canvas.drawPicture(*overlayImage, *slide);
  for (const std::int64_t id : order) {
    const auto stroke = strokes.find(id);
    if (stroke != strokes.end()) drawStroke(canvas, stroke->second, *slide);
  }
  drawLaser(canvas, *slide, mediaTime);
}

void OverlayView::drawStroke(Canvas& canvas, const std::vector<Point>& stroke,
                             const Rect& slide) const {
  const SlideMapping mapping(slide);
  Lines lines;
  for (std::size_t run = 0; run < runCount(stroke.size()); ++run) {
    collectRun(stroke, run, mapping, bounds(), bounds(), lines);
    if (!lines.starts.empty()) canvas.strokeLines(lines, mapping.penWidth());
  }
}

void OverlayView::drawLaser(Canvas& canvas, const Rect& slide, double mediaTime) const {
  if (!isLaserAlive(mediaTime) || laserArea(slide).isEmpty()) return;
  const double age = mediaTime - laserAt;
  const double fade = age < kLaserFullTime ? 1.0 : 1 - 2 * (age - kLaserFullTime);
  const SlideMapping mapping(slide);
  const Point centre = mapping.map(*laser);
  const double radius = mapping.laserRadius();
  canvas.fillOval(squareAround(centre, kHaloScale * radius), 0.35 * fade);
  canvas.fillOval(squareAround(centre, radius), 0.95 * fade);
}

void OverlayView::spoilBetween(const Point& from, const Point& to) {
  const auto slide = drawnSlide();
  if (!slide) return;
  const SlideMapping mapping(*slide);
  const Point a = mapping.map(from), b = mapping.map(to);
  const Rect line = standardized(rectBetween(a.x, a.y, b.x, b.y));
  const Rect touched = widenedToWhole(outset(line, penReach(mapping.penWidth())));
  if (touched.isFinite()) layer_.spoil(intersected(touched, bounds()));
}

void OverlayView::spoilStroke(std::int64_t id) {
  const auto box = index_.boxOf(id);
  if (box) spoilBetween({box->x, box->y}, {box->right(), box->bottom()});
}

}  // namespace torvane
