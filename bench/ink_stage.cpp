// The engine and the eye of ./ink_on_screen: answers the helper's questions for ink and watches
// the screen for what becomes of it.
//
//   ink_stage STROKES SAMPLES     STROKES of 100 points first: "drawn" when they were all fetched.
//                                 Then a line for each of SAMPLES: the microseconds from the answer
//                                 to the ink on the screen, and those that one look takes. Then
//                                 nothing new, until it is ended.
//
// It also takes the selection by which compositors are known: then the helper shows its window as
// it does under one, while its pixels reach the screen without one's own delay.

#include <unistd.h>
#include <xcb/xcb_ewmh.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <random>

#include "engines.h"
#include "measure.h"
#include "support/ink_strokes.h"

namespace torvane::bench {
namespace {

constexpr std::size_t kPointsPerStroke = 100;
constexpr int kStrokesPerAnswer = 500;
constexpr int kPlacesPerRow = 60;  // where samples appear
constexpr double kAspect = 0.5625;

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

  // Whether the screen is red at this place of the slide.
  [[nodiscard]] bool seesInk(const Point& place) {
    const double width = screen_->width_in_pixels, height = screen_->height_in_pixels;
    const auto x = static_cast<std::int16_t>(place.x * width);
    const auto y =
        static_cast<std::int16_t>((height - kAspect * width) / 2 + place.y * kAspect * width);
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
  Stage(int strokes, int samples) : strokes_(strokes), samples_(samples) {}

  [[nodiscard]] std::string answer(std::string_view target) {
    if (!target.starts_with("/api/ink/events")) return R"({"slide":1,"presenting":true})";
    const std::string events = drawn_ < strokes_ ? someStrokes() : nextSample();
    return R"({"presenting":true,"aspect":0.5625,"overlayV":0,"seq":)" + std::to_string(++seq_) +
           R"(,"events":[)" + events + "]}";
  }

  // Waits for the next sample; where it will appear, and when it was answered.
  [[nodiscard]] std::pair<Point, Clock::time_point> awaitSample(int number) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return sample_ >= number; });
    return {placeOf(number), answered_};
  }

 private:
  [[nodiscard]] std::string someStrokes() {
    std::string all;
    for (int i = 0; i < kStrokesPerAnswer && drawn_ < strokes_; ++i, ++drawn_) {
      const auto points = wanderingStroke(random_, kPointsPerStroke, 3.0 / 1920);
      for (std::size_t k = 0; k < points.size(); ++k) {
        // The lower half stays free for the samples.
        const Point at{points[k].x, points[k].y * 0.4};
        all += (all.empty() ? "" : ",") + event(k == 0 ? "begin" : "pt", drawn_, at);
      }
    }
    if (drawn_ >= strokes_) {
      std::puts("drawn");
      std::fflush(stdout);
    }
    return all;
  }

  // Every fourth answer, so that the screen is at rest before it.
  [[nodiscard]] std::string nextSample() {
    if (++rest_ % 4 != 0 || sample_ >= samples_) return "";
    const std::lock_guard lock(mutex_);
    ++sample_;
    answered_ = Clock::now();
    changed_.notify_all();
    const Point place = placeOf(sample_);
    return event("begin", strokes_ + sample_, place) + "," +
           event("pt", strokes_ + sample_, {place.x + 0.004, place.y});
  }

  [[nodiscard]] static Point placeOf(int sample) {
    return {0.02 + 0.016 * (sample % kPlacesPerRow), 0.6 + 0.02 * (sample / kPlacesPerRow % 18)};
  }

  const int strokes_, samples_;
  int drawn_ = 0, rest_ = 0, seq_ = 0;
  std::mt19937 random_{7};

  std::mutex mutex_;
  std::condition_variable changed_;
  int sample_ = 0;
  Clock::time_point answered_;
};

int run(int strokes, int samples) {
  Eye eye;
  if (!eye.open()) return 2;
  Stage stage(strokes, samples);
  const auto engine =
      FastEngine::start([&](std::string_view target) { return stage.answer(target); });
  if (!engine) return 2;
  for (int number = 1; number <= samples; ++number) {
    const auto [place, answered] = stage.awaitSample(number);
    while (!eye.seesInk(place)) {
      if (microsecondsSince(answered) > 5e6) return 1;
    }
    const double seen = microsecondsSince(answered);
    const auto again = Clock::now();
    keep(eye.seesInk(place));
    std::printf("%.0f %.0f\n", seen, microsecondsSince(again));
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
  if (count != 3) return 2;
  return torvane::bench::run(std::atoi(arguments[1]), std::atoi(arguments[2]));
}
