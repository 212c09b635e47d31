#include "ink/ink_index.h"

#include <limits>

namespace torvane {
namespace {

constexpr std::uint32_t kGone = std::numeric_limits<std::uint32_t>::max();

// The nearest floats around a double. Beyond a million all fractions are drawn alike.
float below(double v) {
  const float f = static_cast<float>(std::clamp(v, -1e6, 1e6));
  return f <= v ? f : std::nextafter(f, -std::numeric_limits<float>::infinity());
}
float above(double v) {
  return -below(-v);
}

}  // namespace

void InkIndex::Box::include(const Point& point) {
  if (!std::isfinite(point.x) || !std::isfinite(point.y)) return;
  if (isEmpty()) {
    *this = {below(point.x), below(point.y), above(point.x), above(point.y)};
    return;
  }
  left = std::min(left, below(point.x));
  top = std::min(top, below(point.y));
  right = std::max(right, above(point.x));
  bottom = std::max(bottom, above(point.y));
}

void InkIndex::begin(std::int64_t id, const Stroke& stroke) {
  const auto [slot, isNew] = slots_.try_emplace(id, static_cast<std::uint32_t>(entries_.size()));
  if (isNew) entries_.push_back({id, &stroke, {}});
  Entry& entry = entries_[slot->second];
  entry.box = {};
  for (const Point& point : stroke) entry.box.include(point);
  places_.push_back(slot->second);
}

void InkIndex::extend(std::int64_t id, const Point& point) {
  if (const auto slot = slots_.find(id); slot != slots_.end()) {
    entries_[slot->second].box.include(point);
  }
}

std::size_t InkIndex::remove(const std::unordered_set<std::int64_t>& ids, std::size_t before) {
  std::size_t kept = 0, goneBefore = 0;
  for (std::size_t place = 0; place < places_.size(); ++place) {
    if (!ids.contains(at(place).id)) {
      places_[kept++] = places_[place];
    } else if (place < before) {
      ++goneBefore;
    }
  }
  places_.resize(kept);
  dropEntries(ids);
  return goneBefore;
}

// The entries that stay move up, and what names them follows.
void InkIndex::dropEntries(const std::unordered_set<std::int64_t>& ids) {
  std::vector<std::uint32_t> movedTo(entries_.size(), kGone);
  std::uint32_t kept = 0;
  for (std::uint32_t old = 0; old < entries_.size(); ++old) {
    if (ids.contains(entries_[old].id)) {
      slots_.erase(entries_[old].id);
      continue;
    }
    entries_[kept] = entries_[old];
    slots_[entries_[kept].id] = kept;
    movedTo[old] = kept++;
  }
  entries_.resize(kept);
  for (auto& place : places_) place = movedTo[place];
}

void InkIndex::clear() {
  entries_.clear();
  slots_.clear();
  places_.clear();
}

std::optional<Rect> InkIndex::boxOf(std::int64_t id) const {
  const auto slot = slots_.find(id);
  if (slot == slots_.end() || entries_[slot->second].stroke->size() < 2) return std::nullopt;
  const Box& box = entries_[slot->second].box;
  if (box.isEmpty()) return std::nullopt;
  return rectBetween(box.left, box.top, box.right, box.bottom);
}

}  // namespace torvane
