#include "ink/ink_layer.h"

#include <limits>

namespace torvane {
namespace {

constexpr double kTileWidth = 480;
constexpr double kTileHeight = 270;
constexpr std::size_t kMostSpoiledParts = 16;

// Work is counted, not timed, so that it is the same on every machine and in every test. A unit is
// about a nanosecond.
constexpr std::int64_t kWorkPerCall = 16'000'000;
constexpr std::int64_t kWorkPerPlace = 5;
constexpr std::int64_t kWorkPerPoint = 5;
constexpr std::int64_t kWorkPerTile = 50'000;
constexpr double kWorkPerSquarePixel = 4;

// The part of the slide, in fractions, whose ink may touch `area`.
Rect fractionsAround(const Rect& area, const Rect& slide) {
  constexpr double kEverywhere = 1e9;
  const Rect near = outset(area, penReach(SlideMapping(slide).penWidth()));
  if (slide.isEmpty()) return outset({}, kEverywhere);
  return {(near.x - slide.x) / slide.width, (near.y - slide.y) / slide.height,
          near.width / slide.width, near.height / slide.height};
}

}  // namespace

void InkLayer::spoil(const Rect& area) {
  if (area.isEmpty()) return;
  for (auto& part : spoiled_) {
    // Points that follow each other make one part. Parts far from each other stay apart, and what
    // is being drawn stays apart from a long rebuild, which it overtakes.
    if (part.area() > kTileWidth * kTileHeight && area.area() < kTileWidth * kTileHeight) continue;
    const Rect both = united(part, area);
    if (both.area() > 1.5 * (part.area() + area.area())) continue;
    part = both;
    return;
  }
  if (spoiled_.size() < kMostSpoiledParts) {
    spoiled_.push_back(area);
  } else {
    spoiled_.back() = united(spoiled_.back(), area);
  }
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
  return spoiled_.empty() ? Rect{} : spoiled_.front();
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

// The smallest part goes first: it is what the presenter is just drawing.
Rect InkLayer::takeTile(const Rect& view) {
  const auto part =
      std::min_element(spoiled_.begin(), spoiled_.end(),
                       [](const Rect& a, const Rect& b) { return a.area() < b.area(); });
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
