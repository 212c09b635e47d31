#include "ink/ink_layer.h"

#include <algorithm>

namespace torvane {
namespace {

constexpr double kTileWidth = 480;
constexpr double kTileHeight = 270;
constexpr std::size_t kMostSpoiledParts = 16;

// Work is counted, not timed, so that it is the same on every machine and in every test. A unit is
// a nanosecond at most, on a machine without wide vectors.
constexpr std::int64_t kWorkPerCall = 12'000'000;
constexpr std::int64_t kWorkPerPlace = 5;
constexpr std::int64_t kWorkPerPoint = 5;
constexpr std::int64_t kWorkPerTile = 50'000;
constexpr double kWorkPerSquarePixel = 4;

bool isLarge(const Rect& part) {
  return part.area() > kTileWidth * kTileHeight;
}

bool belongTogether(const Rect& a, const Rect& b) {
  if (isLarge(a) || isLarge(b)) return isLarge(a) && isLarge(b);
  return united(a, b).area() <= 1.5 * (a.area() + b.area());
}

// The part of the slide, in fractions, whose ink may touch `area`.
Rect fractionsAround(const Rect& area, const Rect& slide) {
  constexpr double kEverywhere = 1e9;
  const Rect near = outset(area, penReach(SlideMapping(slide).penWidth()));
  if (slide.isEmpty()) return outset({}, kEverywhere);
  return {(near.x - slide.x) / slide.width, (near.y - slide.y) / slide.height,
          near.width / slide.width, near.height / slide.height};
}

}  // namespace

// Points that follow each other make one part, and so does all that is large: then the parts cover
// little more than what they stand for. Small parts stay apart from what is large, which they
// overtake: one of them is what the presenter is just drawing.
void InkLayer::spoil(const Rect& area) {
  if (area.isEmpty()) return;
  Rect whole = area;
  const auto joins = [&](const Rect& part) {
    if (!belongTogether(part, whole)) return false;
    whole = united(part, whole);
    return true;
  };
  while (std::erase_if(spoiled_, joins) > 0) {
  }
  spoiled_.push_back(whole);
  if (spoiled_.size() > kMostSpoiledParts) uniteTwoSmallParts();
}

// The oldest two. There are always that many: what is large is one part, and two more at most that
// a tile was taken from.
void InkLayer::uniteTwoSmallParts() {
  Rect both;
  int missing = 2;
  std::erase_if(spoiled_, [&](const Rect& part) {
    if (missing == 0 || isLarge(part)) return false;
    --missing;
    both = united(both, part);
    return true;
  });
  spoil(both);
}

void InkLayer::spoilAll(const Rect& view) {
  job_.reset();
  spoiled_.clear();
  spoil(view);
}

void InkLayer::discard() {
  layer_.reset();
  job_.reset();
  spoiled_.clear();
}

void InkLayer::didRemovePlaces(std::size_t count) {
  if (!job_) return;
  if (job_->run > 0) {  // whether that very stroke is gone is not worth knowing
    job_->tile = job_->tile->makeLayer(job_->area);
    job_->place = job_->run = 0;
  } else {
    job_->place -= count;
  }
}

Rect InkLayer::nextArea() const {
  if (job_) return job_->area;
  return spoiled_.empty() ? Rect{} : spoiled_[nextPart()];
}

// The newest part goes first, and what is large last.
std::size_t InkLayer::nextPart() const {
  const auto newest = std::find_if_not(spoiled_.rbegin(), spoiled_.rend(), isLarge);
  const auto next = newest == spoiled_.rend() ? spoiled_.rbegin() : newest;
  return static_cast<std::size_t>(spoiled_.rend() - next) - 1;
}

std::vector<Rect> InkLayer::repair(const Canvas& canvas, const InkScene& scene) {
  if (!layer_) {
    layer_ = canvas.makeLayer(scene.view);
    spoilAll(scene.view);
  }
  std::vector<Rect> repaired;
  work_ = kWorkPerCall;
  while (work_ > 0 && !isSettled()) {
    if (!job_) startJob(scene);
    if (!continueJob(scene)) break;
    layer_->copyLayer(*job_->tile, job_->area);
    repaired.push_back(job_->area);
    job_.reset();
  }
  return repaired;
}

void InkLayer::copyTo(Canvas& canvas, const Rect& area) const {
  if (layer_) canvas.copyLayer(*layer_, area);
}

Rect InkLayer::takeTile(const Rect& view) {
  const auto part = spoiled_.begin() + static_cast<std::ptrdiff_t>(nextPart());
  const Rect rest = intersected(widenedToWhole(*part), view);
  spoiled_.erase(part);
  const double right = std::min(rest.right(), rest.x + kTileWidth);
  const double bottom = std::min(rest.bottom(), rest.y + kTileHeight);
  // What is right of the tile, and what is below it all.
  const Rect beside = rectBetween(right, rest.y, rest.right(), bottom);
  const Rect below = rectBetween(rest.x, bottom, rest.right(), rest.bottom());
  for (const Rect& more : {beside, below}) {
    if (!more.isEmpty()) spoiled_.push_back(more);
  }
  return rectBetween(rest.x, rest.y, right, bottom);
}

void InkLayer::startJob(const InkScene& scene) {
  const Rect area = takeTile(scene.view);
  job_.emplace(Job{area, layer_->makeLayer(area)});
  if (scene.picture) job_->tile->drawPicture(*scene.picture, scene.slide);
  work_ -= kWorkPerTile;
}

// False when it has to go on in the next call.
bool InkLayer::continueJob(const InkScene& scene) {
  const Rect near = fractionsAround(job_->area, scene.slide);
  for (; job_->place < scene.index.size(); ++job_->place, job_->run = 0) {
    work_ -= kWorkPerPlace;
    if (work_ <= 0) return false;
    if (scene.index.mayTouch(job_->place, near) && !paintStroke(scene)) return false;
  }
  return true;
}

bool InkLayer::paintStroke(const InkScene& scene) {
  const SlideMapping mapping(scene.slide);
  const auto& stroke = scene.index.stroke(job_->place);
  for (; job_->run < runCount(stroke.size()); ++job_->run) {
    if (work_ <= 0) return false;
    const double length = collectRun(stroke, job_->run, mapping, scene.view, job_->area, lines_);
    work_ -= kWorkPerPoint * static_cast<std::int64_t>(std::min(stroke.size(), kRunLength));
    if (lines_.starts.empty()) continue;
    const double width = mapping.penWidth();
    job_->tile->strokeLines(lines_, width);
    const double touched = (length + width * static_cast<double>(lines_.points.size())) * width;
    const double scale = job_->tile->pixelsPerPoint();
    work_ -= static_cast<std::int64_t>(kWorkPerSquarePixel * touched * scale * scale);
  }
  return true;
}

}  // namespace torvane
