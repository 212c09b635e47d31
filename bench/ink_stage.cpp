// The engine and the eye of ./ink_on_screen: answers the helper's questions for ink and watches
// the screen for what becomes of it.
//
//   ink_stage STROKES SAMPLES REBUILDS
//                    STROKES of 100 points first: "drawn" when they were all fetched. Then a line
//                    for each of SAMPLES: the microseconds from the answer to the ink on the
//                    screen, and those that one look takes. Then one for each of REBUILDS: the
//                    microseconds from an answer with another aspect until ink is seen in the new
//                    corners of the slide. Then "over", and nothing new, until it is ended.
//
// It also takes the selection by which compositors are known: then the helper shows its window as
// it does under one, while its pixels reach the screen without one's own delay.

#include <unistd.h>
#include <xcb/xcb_ewmh.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <random>
#include <utility>

#include "engines.h"
#include "measure.h"
#include "support/ink_strokes.h"

namespace torvane::bench {
namespace {

constexpr std::size_t kPointsPerStroke = 100;
constexpr int kStrokesPerAnswer = 500;
constexpr int kPlacesPerRow = 60;  // where samples appear
constexpr std::array<double, 2> kAspects = {0.5625, 0.3};
constexpr std::array<Point, 4> kCorners = {
    {{0.01, 0.02}, {0.985, 0.02}, {0.01, 0.98}, {0.985, 0.98}}};

class Eye {
 public:
  [[nodiscard]] bool open() {
    int number = 0;
    connection_ = xcb_connect(nullptr, &number);
    if (xcb_connection_has_error(connection_) != 0) return false;
    if (xcb_ewmh_init_atoms_replies(&ewmh_, xcb_ewmh_init_atoms(connection_, &ewmh_), nullptr) ==
        0) {
      return false;
    }
    screen_ = ewmh_.screens[number];
    const xcb_window_t owner = xcb_generate_id(connection_);
    xcb_create_window(connection_, 0, owner, screen_->root, -9, -9, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(connection_, owner, ewmh_._NET_WM_CM_Sn[number], XCB_CURRENT_TIME);
    return xcb_flush(connection_) > 0;
  }

  // Whether the screen is red at this place of a slide of this aspect.
  [[nodiscard]] bool seesInk(const Point& place, double aspect = kAspects[0]) {
    const double width = screen_->width_in_pixels, height = screen_->height_in_pixels;
    const auto x = static_cast<std::int16_t>(place.x * width);
    const auto y =
        static_cast<std::int16_t>((height - aspect * width) / 2 + place.y * aspect * width);
    const auto asked =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, x, y, 1, 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(connection_, asked, nullptr), &std::free);
    if (!reply || xcb_get_image_data_length(reply.get()) < 3) return false;
    const std::uint8_t* pixel = xcb_get_image_data(reply.get());  // blue, green, red
    return pixel[2] > 200 && pixel[1] < 100;
  }

 private:
  xcb_connection_t* connection_ = nullptr;
  xcb_ewmh_connection_t ewmh_ = {};
  xcb_screen_t* screen_ = nullptr;
};

std::string event(const char* kind, int id, const Point& at) {
  std::array<char, 120> text;
  std::snprintf(text.data(), text.size(), R"({"t":"%s","id":%d,"x":%.6f,"y":%.6f})", kind, id, at.x,
                at.y);
  return text.data();
}

// Where the engine's thread puts the samples and the eye's takes them.
class Stage {
 public:
  Stage(int strokes, int samples, int rebuilds)
      : strokes_(strokes), samples_(samples), rebuilds_(rebuilds) {}

  [[nodiscard]] std::string answer(std::string_view target) {
    if (!target.starts_with("/api/ink/events")) return R"({"slide":1,"presenting":true})";
    const std::string events = nextEvents();
    if (!events.empty()) ++seq_;
    return R"({"presenting":true,"overlayV":0,"aspect":)" + std::to_string(aspect(rebuild_)) +
           R"(,"seq":)" + std::to_string(seq_) + R"(,"events":[)" + events + "]}";
  }

  // Before the rebuild of this number, and after it.
  [[nodiscard]] static double aspect(int rebuild) {
    return kAspects[static_cast<std::size_t>(rebuild) % kAspects.size()];
  }

  // Wait for what was answered, and when that was.
  [[nodiscard]] Clock::time_point awaitSample(int number) {
    return await([&] { return sample_ >= number; });
  }
  [[nodiscard]] Clock::time_point awaitRebuild(int number) {
    return await([&] { return rebuild_ >= number; });
  }

  [[nodiscard]] static Point placeOf(int sample) {
    return {0.02 + 0.016 * (sample % kPlacesPerRow), 0.6 + 0.02 * (sample / kPlacesPerRow % 18)};
  }

 private:
  [[nodiscard]] std::string nextEvents() {
    if (!std::exchange(begun_, true)) return corners();
    return drawn_ < strokes_ ? someStrokes() : nextTask();
  }

  [[nodiscard]] std::string someStrokes() {
    std::string all;
    for (int i = 0; i < kStrokesPerAnswer && drawn_ < strokes_; ++i, ++drawn_) {
      const auto points = wanderingStroke(random_, kPointsPerStroke, 3.0 / 1920);
      for (std::size_t k = 0; k < points.size(); ++k) {
        // The lower half stays free for the samples, and the edges for the corners.
        const Point at{0.15 + 0.65 * points[k].x, points[k].y * 0.4};
        all += (all.empty() ? "" : ",") + event(k == 0 ? "begin" : "pt", drawn_, at);
      }
    }
    if (drawn_ >= strokes_) {
      std::puts("drawn");
      std::fflush(stdout);
    }
    return all;
  }

  // Samples every fourth answer and rebuilds every 25th, so that the screen is at rest before.
  [[nodiscard]] std::string nextTask() {
    ++rest_;
    const std::lock_guard lock(mutex_);
    if (sample_ < samples_) {
      if (rest_ % 4 != 0) return "";
      note(sample_);
      return dash(strokes_ + sample_, placeOf(sample_));
    }
    if (rest_ % 25 != 0 || rebuild_ >= rebuilds_) return "";
    note(rebuild_);
    return event("pt", -9, {0, 0});  // of no stroke: it only asks for a redraw
  }

  void note(int& task) {
    ++task;
    answered_ = Clock::now();
    changed_.notify_all();
  }

  [[nodiscard]] static std::string dash(int id, const Point& at) {
    return event("begin", id, at) + "," + event("pt", id, {at.x + 0.004, at.y});
  }

  [[nodiscard]] static std::string corners() {
    std::string all;
    for (int i = 0; i < 4; ++i) {
      all += (i == 0 ? "" : ",") + dash(-1 - i, kCorners[static_cast<std::size_t>(i)]);
    }
    return all;
  }

  template <typename Condition>
  [[nodiscard]] Clock::time_point await(Condition condition) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, condition);
    return answered_;
  }

  const int strokes_, samples_, rebuilds_;
  bool begun_ = false;
  int drawn_ = 0, rest_ = 0, seq_ = 0;
  std::mt19937 random_{7};

  std::mutex mutex_;
  std::condition_variable changed_;
  int sample_ = 0, rebuild_ = 0;
  Clock::time_point answered_;
};

// Exits where it is not to be seen.
template <typename Condition>
double microsecondsUntilSeen(Clock::time_point answered, Condition isSeen) {
  while (!isSeen()) {
    if (microsecondsSince(answered) > 1e7) std::exit(1);
  }
  return microsecondsSince(answered);
}

int run(int strokes, int samples, int rebuilds) {
  Eye eye;
  if (!eye.open()) return 2;
  Stage stage(strokes, samples, rebuilds);
  const auto engine =
      FastEngine::start([&](std::string_view target) { return stage.answer(target); });
  if (!engine) return 2;
  for (int number = 1; number <= samples; ++number) {
    const auto answered = stage.awaitSample(number);
    const Point place = Stage::placeOf(number);
    const double seen = microsecondsUntilSeen(answered, [&] { return eye.seesInk(place); });
    const auto again = Clock::now();
    keep(eye.seesInk(place));
    std::printf("%.0f %.0f\n", seen, microsecondsSince(again));
    std::fflush(stdout);
  }
  for (int number = 1; number <= rebuilds; ++number) {
    const auto answered = stage.awaitRebuild(number);
    const auto isDone = [&] {
      return std::all_of(kCorners.begin(), kCorners.end(), [&](const Point& corner) {
        return eye.seesInk(corner, Stage::aspect(number));
      });
    };
    std::printf("%.0f\n", microsecondsUntilSeen(answered, isDone));
    std::fflush(stdout);
  }
  std::puts("over");
  std::fflush(stdout);
  ::pause();
  return 0;
}

}  // namespace
}  // namespace torvane::bench

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const auto number = [&](int i) { return std::atoi(arguments[i]); };
  return torvane::bench::run(number(1), number(2), number(3));
}
