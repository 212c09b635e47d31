#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "ink/ink_index.h"
#include "ink/ink_path.h"
#include "ports/canvas.h"

namespace torvane {

// What an ink layer shows, for the time of one call.
struct InkScene {
  const InkIndex& index;
  const Picture* picture;  // null for none
  Rect slide;              // of finite numbers, with a size that is not negative
  Rect view;
};

// The picture and all ink as they were painted last, and what of that is out of date. Parts that
// are out of date are repaired tile by tile, each on a canvas of its own that replaces the old
// part when it is finished; work beyond a small amount per call is left to the next call.
class InkLayer {
 public:
  // This part of the view shows what is no longer so.
  void spoil(const Rect& area);
  void spoilAll(const Rect& view);

  // The layer itself goes: another size, other pixels, or nobody looks.
  void discard();

  // Places of the drawing order before `nextPlace()` were removed.
  void didRemovePlaces(std::size_t count);
  [[nodiscard]] std::size_t nextPlace() const { return job_ ? job_->place : 0; }

  // Repairs a bounded amount; returns the parts of the layer that are new.
  std::vector<Rect> repair(const Canvas& canvas, const InkScene& scene);
  void copyTo(Canvas& canvas, const Rect& area) const;

  [[nodiscard]] bool isSettled() const { return !job_ && spoiled_.empty(); }
  [[nodiscard]] const std::vector<Rect>& spoiled() const { return spoiled_; }
  // What will be new next; empty when settled.
  [[nodiscard]] Rect nextArea() const;

 private:
  struct Job {
    Rect area;
    std::unique_ptr<Canvas> tile;
    std::size_t place = 0;  // in the drawing order, and the run of the stroke there
    std::size_t run = 0;
  };

  void uniteTwoSmallParts();
  [[nodiscard]] std::size_t nextPart() const;
  [[nodiscard]] Rect takeTile(const Rect& view);
  void startJob(const InkScene& scene);
  bool continueJob(const InkScene& scene);
  bool paintStroke(const InkScene& scene);

  std::unique_ptr<Canvas> layer_;
  std::vector<Rect> spoiled_;
  std::optional<Job> job_;
  Lines lines_;            // kept for its memory
  std::int64_t work_ = 0;  // left in this call
};

}  // namespace torvane
