#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ports/canvas.h"

namespace torvane {

struct PlainPicture final : Picture {};

// Remembers what was drawn on it.
class RecordingCanvas final : public Canvas {
 public:
  struct Call {
    std::string what;  // "picture", "lines", "oval", "layer"
    Rect rect;         // where the picture, oval or layer goes
    double value = 0;  // the lines' width, the oval's opacity
    Lines lines;
  };

  [[nodiscard]] double pixelsPerPoint() const override { return 1; }
  void drawPicture(const Picture&, const Rect& into) override {
    calls.push_back({"picture", into, 0, {}});
  }
  void strokeLines(const Lines& lines, double width) override {
    calls.push_back({"lines", {}, width, lines});
  }
  void fillOval(const Rect& bounds, double opacity) override {
    calls.push_back({"oval", bounds, opacity, {}});
  }
  [[nodiscard]] std::unique_ptr<Canvas> makeLayer(const Rect&) const override {
    return std::make_unique<RecordingCanvas>();
  }
  void copyLayer(const Canvas&, const Rect& part) override {
    calls.push_back({"layer", part, 0, {}});
  }

  std::vector<Call> calls;
};

}  // namespace torvane
