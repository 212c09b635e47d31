#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "fakes/part_test.h"
#include "ink/ink_feed.h"

namespace torvane {

// The ink's part of the program, and its window.
class InkTest : public PartTest, private InkFeed::Host {
 protected:
  bool serverRunning = true;
  FakeAnswer events{httpError("refused")};  // what the engine answers
  FakeAnswer picture{httpResult(404)};
  ShownOverlay& shown = platform.overlaySurfaces.shown;

  OverlayController overlay{{.windowServer = platform.ports.windowServer,
                             .screens = platform.ports.screens,
                             .surfaces = platform.ports.overlaySurfaces}};
  OverlayView& view = overlay.view();
  InkFeed ink{{.http = platform.ports.http,
               .pictures = platform.ports.pictures,
               .clock = platform.ports.clock},
              main,
              overlay,
              *this};

  void SetUp() override {
    platform.http.server = [this](const HttpRequest& request) {
      return request.url.find("/api/ink/overlay") != std::string::npos ? picture : events;
    };
  }

  // One tick, answered with this body.
  void tick(std::string_view body, int status = 200) {
    events = {httpResult(status, body)};
    ink.inkTick();
    platform.time.runDue();
  }

  std::size_t asked() const { return platform.http.requests.size() - fetched(); }
  std::size_t fetched() const { return platform.http.requestsTo("/api/ink/overlay").size(); }

  // Whether a tick asks now, and no answer stands out. The question comes to nothing.
  bool asks() {
    const std::size_t before = asked();
    events = {httpError("refused")};
    ink.inkTick();
    platform.time.runDue();
    return asked() > before;
  }

  // The number of the last event that has arrived, as the next question names it.
  std::int64_t since() {
    if (!asks()) return -1;
    const std::string url = platform.http.requests.back().url;
    return std::stoll(url.substr(url.rfind('=') + 1));
  }

 private:
  bool isServerRunning() const override { return serverRunning; }
};

}  // namespace torvane
