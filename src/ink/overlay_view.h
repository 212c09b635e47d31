#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "ink/ink_index.h"
#include "ink/ink_layer.h"
#include "ports/canvas.h"
#include "ports/geometry.h"

namespace torvane {

// What shows a view. Main thread only.
class OverlayDisplay {
 public:
  virtual ~OverlayDisplay() = default;

  // Asks for draw() of this part (in points of the view) soon, never within the call. Parts asked
  // for before the drawing begins may be drawn at once. An empty part asks for nothing new.
  virtual void invalidate(const Rect& viewPart) = 0;
};

// The ink laid over the slide show. Positions are fractions of the slide, (0, 0) its top left and
// (1, 1) its bottom right corner; values outside are kept as they are. Main thread only.
//
// Whoever changes strokes, order, aspect or picture does so through the methods below, which
// remember what is to be painted anew, and then calls setNeedsDisplay().
class OverlayView {
 public:
  std::map<std::int64_t, std::vector<Point>> strokes;  // by stroke id
  std::vector<std::int64_t> order;                     // drawing order; an id may be there twice
  std::optional<Point> laser;
  double laserAt = 0;                           // media clock, seconds: when the dot was placed
  double aspect = 0.5625;                       // slide height / slide width
  std::shared_ptr<const Picture> overlayImage;  // drawn under the ink

  // A stroke with one point; one of the same id is replaced, and drawn once per place in `order`.
  void begin(std::int64_t id, const Point& point);
  void append(std::int64_t id, const Point& point);  // nothing when there is no such stroke
  void remove(const std::vector<std::int64_t>& ids);
  void clearInk();  // strokes, order and laser dot
  void placeLaser(const Point& point, double now);
  void setAspect(double ratio);
  void setOverlayImage(std::shared_ptr<const Picture> picture);
  void setNeedsDisplay();
  // A laser dot is alive until it has faded; the second also counts what draws have left of one.
  [[nodiscard]] bool isLaserAlive(double mediaTime) const;
  [[nodiscard]] bool showsLaser(double mediaTime) const;
  // Asks for the place of a laser dot that has gone since it was drawn last. Nothing else would:
  // the dot was still to be seen a little in the last redraw of its fade.
  void wipeFadedLaser(double mediaTime);

  // The letterboxed slide within the view's bounds. Whether its numbers are sane depends on
  // `aspect`.
  [[nodiscard]] Rect slideRect() const;

  // For what shows the view: null when it stops doing so. Sizes are in points.
  void setDisplay(OverlayDisplay* display);
  void setSize(double width, double height);
  // Lets go of what was painted, because it is not shown or because pixels changed their size.
  void discardLayer();

  // Draws `dirty` at this media time, from the cached layer; asks for more draws where that takes
  // longer than one.
  void draw(Canvas& canvas, const Rect& dirty, double mediaTime);
  // What draw() must come to, painted from nothing and as slowly as that takes.
  void drawPlainly(Canvas& canvas, double mediaTime) const;

  [[nodiscard]] bool isSettled() const { return layer_.isSettled(); }

 private:
  [[nodiscard]] Rect bounds() const { return {0, 0, width_, height_}; }
  [[nodiscard]] std::optional<Rect> drawnSlide() const;
  [[nodiscard]] Rect laserArea(const Rect& slide) const;
  void drawStroke(Canvas& canvas, const std::vector<Point>& stroke, const Rect& slide) const;
  void drawLaser(Canvas& canvas, const Rect& slide, double mediaTime) const;
  void spoilBetween(const Point& from, const Point& to);
  void spoilStroke(std::int64_t id);

  double width_ = 0;
  double height_ = 0;
  OverlayDisplay* display_ = nullptr;
  InkIndex index_;
  InkLayer layer_;
  Rect laserShown_;  // where draws have left a dot
};

}  // namespace torvane
