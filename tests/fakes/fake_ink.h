#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/simulated_time.h"
#include "ink/overlay_view.h"
#include "ports/overlay_surface.h"
#include "ports/picture_decoder.h"
#include "ports/window_server.h"

namespace torvane {

class FakeWindowServer final : public WindowServer {
 public:
  std::optional<std::vector<WindowInfo>> windows = std::vector<WindowInfo>();
  int queries = 0;

  [[nodiscard]] std::optional<std::vector<WindowInfo>> onScreenWindows() override {
    ++queries;
    return windows;
  }
};

class FakeScreens final : public Screens {
 public:
  std::vector<Rect> displays = {{0, 0, 1920, 1080}};
  std::size_t focused = 0;  // index of the one with the keyboard focus

  [[nodiscard]] std::vector<Rect> frames() const override { return displays; }
  [[nodiscard]] std::optional<Rect> mainFrame() const override {
    if (focused >= displays.size()) return std::nullopt;
    return displays[focused];
  }
};

// What is seen of the overlay now and was done to it, read after it has been given away.
struct ShownOverlay {
  int timesMade = 0;
  const OverlayView* content = nullptr;  // what it draws
  Rect frame;
  std::vector<Rect> framesSet;  // after it was made
  bool isVisible = false;
  bool hasSoftEdges = true;
  int timesFronted = 0;
  int timesOrderedOut = 0;
  int invalidations = 0;
};

class FakeOverlaySurfaces final : public OverlaySurfaces {
 public:
  ShownOverlay shown;
  bool isPossible = true;

  [[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface(const Rect& frame,
                                                                   OverlayView& content) override {
    if (!isPossible) return nullptr;
    ++shown.timesMade;
    shown.content = &content;
    shown.frame = frame;
    return std::make_unique<FakeOverlaySurface>(shown, content);
  }

 private:
  class FakeOverlaySurface final : public OverlaySurface, public OverlayDisplay {
   public:
    FakeOverlaySurface(ShownOverlay& shown, OverlayView& content)
        : shown_(shown), content_(content) {
      content_.setDisplay(this);
    }
    ~FakeOverlaySurface() override { content_.setDisplay(nullptr); }
    FakeOverlaySurface(const FakeOverlaySurface&) = delete;
    FakeOverlaySurface& operator=(const FakeOverlaySurface&) = delete;

    [[nodiscard]] Rect frame() const override { return shown_.frame; }
    void setFrame(const Rect& frame) override {
      shown_.frame = frame;
      shown_.framesSet.push_back(frame);
    }
    [[nodiscard]] bool isVisible() const override { return shown_.isVisible; }
    [[nodiscard]] bool hasSoftEdges() const override { return shown_.hasSoftEdges; }
    void orderFrontRegardless() override {
      shown_.isVisible = true;
      ++shown_.timesFronted;
    }
    void orderOut() override {
      shown_.isVisible = false;
      ++shown_.timesOrderedOut;
    }
    void invalidate(const Rect&) override { ++shown_.invalidations; }

   private:
    ShownOverlay& shown_;
    OverlayView& content_;
  };
};

class FakePicture final : public Picture {
 public:
  explicit FakePicture(std::string from) : file(std::move(from)) {}
  const std::string file;  // what it was decoded from
};

// Takes whatever begins with "picture" for one. Decodes one at a time, off the main thread.
class FakePictureDecoder final : public PictureDecoder {
 public:
  explicit FakePictureDecoder(SimulatedTime& time) : time_(time) {}
  double secondsPerPicture = 0;  // for a picture; what is none is found out at once
  int decoded = 0;

  void decode(Bytes data, std::function<void(std::shared_ptr<const Picture>)> done) override {
    std::shared_ptr<const Picture> picture;
    if (asText(data).substr(0, 7) == "picture") {
      picture = std::make_shared<FakePicture>(std::string(asText(data)));
      ++decoded;
    }
    const double start = std::max(time_.now(), busyUntil_);
    busyUntil_ = start + (picture ? secondsPerPicture : 0);
    time_.scheduleBackground(busyUntil_ - time_.now(),
                             [picture, done = std::move(done)] { done(picture); });
  }

 private:
  SimulatedTime& time_;
  double busyUntil_ = 0;
};

}  // namespace torvane
