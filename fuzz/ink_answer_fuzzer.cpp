// Ink answers of an engine, one after the other, against a plain model of what they mean: no joined
// deletions, no turns, no shortcuts. After each, the overlay is drawn on a canvas that looks at
// what it is given. The input is the answers' bodies, with a zero byte between two.

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fakes/simulated_platform.h"
#include "ink/ink_feed.h"
#include "require.h"

using namespace torvane;
using fuzz::require;

namespace {

constexpr double kPollInterval = 0.08;
constexpr Rect kView{0, 0, 1280, 800};
constexpr double kMostOutside = 40;  // of the view: twice a pen's reach, with some room
constexpr int kMostDraws = 1'000;    // for an input of a few kilobytes

bool isNear(const Point& point) {
  return point.x >= -kMostOutside && point.x <= kView.width + kMostOutside &&
         point.y >= -kMostOutside && point.y <= kView.height + kMostOutside;
}

// Requires that everything drawn is a thing of a sane size, in or near the view.
class CheckingCanvas final : public Canvas {
 public:
  [[nodiscard]] double pixelsPerPoint() const override { return 1; }

  void drawPicture(const Picture&, const Rect& into) override {
    require(into.isFinite() && contains(outset(kView, 1), into), "pictures lie in the view");
  }

  void strokeLines(const Lines& lines, double width) override {
    require(width >= 3 && width <= kView.width, "pens have a width");
    require(std::ranges::all_of(lines.points, isNear), "lines stay near the view");
    require(!lines.starts.empty() && lines.starts.front() == 0, "all points belong to a line");
    for (std::size_t i = 0; i < lines.starts.size(); ++i) {
      const auto end = i + 1 < lines.starts.size() ? lines.starts[i + 1] : lines.points.size();
      require(end >= lines.starts[i] + 2, "lines have two points");
    }
  }

  void fillOval(const Rect& bounds, double opacity) override {
    require(opacity > 0 && opacity <= 1, "dots are seen");
    require(bounds.isFinite() && bounds.width > 0 && bounds.width < kView.width, "dots are small");
  }

  [[nodiscard]] std::unique_ptr<Canvas> makeLayer(const Rect& area) const override {
    requireInView(area);
    return std::make_unique<CheckingCanvas>();
  }
  void copyLayer(const Canvas&, const Rect& area) override { requireInView(area); }

 private:
  static void requireInView(const Rect& area) {
    require(area.isFinite() && contains(kView, area), "layers lie in the view");
  }
};

struct Model {
  std::map<std::int64_t, std::vector<Point>> strokes;
  std::vector<std::int64_t> order;
  std::optional<Point> laser;
  double laserAt = 0;
  double aspect = 0.5625;
  std::int64_t seq = 0;
  bool isShown = false;

  void take(std::string_view body, double now) {
    const auto answer = parseJsonObject(body);
    const auto newSeq = answer ? integerMember(*answer, "seq") : std::nullopt;
    if (!newSeq) return;
    if (*newSeq < seq) {
      seq = 0;
      clear();
      return;
    }
    seq = *newSeq;
    aspect = numberMember(*answer, "aspect").value_or(0.5625);
    for (const auto& event : eventsIn(*answer)) take(event, now);
    const auto* presenting = answer->if_contains("presenting");
    isShown = presenting != nullptr && *presenting == JsonValue(true);
  }

 private:
  static std::vector<JsonObject> eventsIn(const JsonObject& answer) {
    const auto* value = answer.if_contains("events");
    if (value == nullptr || !value->is_array()) return {};
    const auto& array = value->get_array();
    const bool areObjects =
        std::ranges::all_of(array, [](const JsonValue& event) { return event.is_object(); });
    std::vector<JsonObject> events;
    for (const auto& event : array) {
      if (areObjects) events.push_back(event.get_object());
    }
    return events;
  }

  void clear() {
    strokes.clear();
    order.clear();
    laser.reset();
  }

  void take(const JsonObject& event, double now) {
    const auto kind = stringMember(event, "t");
    const auto id = integerMember(event, "id");
    const auto x = numberMember(event, "x");
    const auto y = numberMember(event, "y");
    if (kind == "clear") clear();
    if (kind == "del") remove(event);
    if (kind == "laserend") laserAt = std::min(laserAt, now - 0.4);
    if (!x || !y) return;
    if (kind == "laser") {
      laser = Point{*x, *y};
      laserAt = now;
    }
    if (kind == "begin" && id) {
      strokes[*id] = {Point{*x, *y}};
      order.push_back(*id);
    }
    if (kind == "pt" && id && strokes.count(*id) != 0) strokes[*id].push_back({*x, *y});
  }

  void remove(const JsonObject& event) {
    const auto* ids = event.if_contains("ids");
    if (ids == nullptr || !ids->is_array()) return;
    for (const auto& id : ids->get_array()) {
      if (!jsonInteger(id)) return;
    }
    for (const auto& value : ids->get_array()) {
      const auto id = *jsonInteger(value);
      strokes.erase(id);
      std::erase(order, id);
    }
  }
};

class Poller final : public InkFeed::Host {
 public:
  Poller() {
    view_.setSize(kView.width, kView.height);
    platform_.http.server = [this](const HttpRequest& request) {
      const auto since = request.url.find("/api/ink/events?since=");
      if (since == std::string::npos) return FakeAnswer{httpResult(200, "picture")};
      asked_.push_back(request.url.substr(request.url.find('=') + 1));
      return FakeAnswer{httpResult(200, body_)};
    };
  }

  void poll(std::string_view body) {
    body_ = body;
    asked_.clear();
    ink_.inkTick();
    platform_.time.runDue();
    require(asked_.size() == 1, "each tick asks, as the answer before it has ended");
    require(asked_.front() == std::to_string(model_.seq), "from the last answer's number on");
    model_.take(body, platform_.time.now());
    check();
    draw();
    platform_.time.advance(kPollInterval);
  }

 private:
  void check() {
    const OverlayView& view = view_;
    require(view.strokes == model_.strokes, "the strokes are those that were sent");
    require(view.order == model_.order, "in the order in which they began");
    require(view.laser == model_.laser && view.laserAt == model_.laserAt, "the laser dot as well");
    require(view.aspect == model_.aspect, "the aspect is taken as it is");
    require(platform_.overlaySurfaces.shown.isVisible == model_.isShown,
            "the overlay is there while something is presented");
  }

  [[nodiscard]] bool isServerRunning() const override { return true; }

  void draw() {
    OverlayView& view = view_;
    CheckingCanvas canvas;
    view.drawPlainly(canvas, platform_.time.now());
    for (int draws = 0; draws == 0 || (canBeDrawn() && !view.isSettled()); ++draws) {
      require(draws < kMostDraws, "a drawing is finished");
      view.draw(canvas, kView, platform_.time.now());
    }
  }

  // An aspect may leave no place for the slide; then what is to be painted waits for another.
  [[nodiscard]] bool canBeDrawn() const {
    const Rect slide = view_.slideRect();
    return slide.isFinite() && slide.width >= 0 && slide.height >= 0;
  }

  SimulatedPlatform platform_;
  const std::shared_ptr<const int> lifetime_ = std::make_shared<const int>(0);
  OverlayController overlay_{
      {platform_.ports.windowServer, platform_.ports.screens, platform_.ports.overlaySurfaces}};
  OverlayView& view_ = overlay_.view();
  InkFeed ink_{{platform_.ports.http, platform_.ports.pictures, platform_.ports.clock},
               MainHop(platform_.ports.mainQueue, lifetime_),
               overlay_,
               *this};
  Model model_;
  std::string body_;
  std::vector<std::string> asked_;  // since which numbers
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Poller poller;
  std::string_view rest = asText({data, size});
  while (!rest.empty()) {
    const auto end = std::min(rest.find('\0'), rest.size());
    poller.poll(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return 0;
}
