#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ports/geometry.h"

namespace torvane {

// Where the strokes of a drawing lie: for each place in the drawing order the stroke's points and
// the box around them, so that a repaint of a small part passes by all that is elsewhere. Boxes
// are in slide fractions and hold every point that is a number; a stroke of less than two points
// has none. Linear in what it is asked to change, and in no more.
class InkIndex {
 public:
  using Stroke = std::vector<Point>;

  // A stroke of this id begins anew, last in the order. `stroke` stays where it is until removed.
  void begin(std::int64_t id, const Stroke& stroke);

  // The point that was appended to a stroke that has begun.
  void extend(std::int64_t id, const Point& point);

  // Removes these strokes; returns how many places of the order before `before` went with them.
  std::size_t remove(const std::unordered_set<std::int64_t>& ids, std::size_t before);
  void clear();

  [[nodiscard]] std::size_t size() const { return places_.size(); }
  [[nodiscard]] const Stroke& stroke(std::size_t place) const { return *at(place).stroke; }

  // Whether the stroke at this place may have a point or a line inside `area` (slide fractions).
  [[nodiscard]] bool mayTouch(std::size_t place, const Rect& area) const {
    return at(place).box.touches(area);
  }

  // The box of one stroke; none where there is no stroke or nothing to see of it.
  [[nodiscard]] std::optional<Rect> boxOf(std::int64_t id) const;

 private:
  struct Box {
    float left = 0, top = 0, right = -1, bottom = -1;  // widened where a float is too coarse
    void include(const Point& point);
    [[nodiscard]] bool isEmpty() const { return right < left; }
    [[nodiscard]] bool touches(const Rect& area) const {
      return !isEmpty() && left <= area.right() && right >= area.x && top <= area.bottom() &&
             bottom >= area.y;
    }
  };
  struct Entry {
    std::int64_t id;
    const Stroke* stroke;
    Box box;
  };

  [[nodiscard]] const Entry& at(std::size_t place) const { return entries_[places_[place]]; }
  void dropEntries(const std::unordered_set<std::int64_t>& ids);

  std::vector<Entry> entries_;                             // one per stroke
  std::unordered_map<std::int64_t, std::uint32_t> slots_;  // id → its entry
  std::vector<std::uint32_t> places_;                      // the order, as entries
};

}  // namespace torvane
