// What live ink costs: per frame, per rebuild, and in memory. Every figure stands beside a floor
// measured in the same run: a bare copy of the same pixels, or a full repaint.
//
//   ink_bench [STROKES...]     100 points each, on 1920 x 1080; default 0 100 10000 100000

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "ink/ink_events.h"
#include "support/ink_strokes.h"
#include "support/overlay_screen.h"

namespace torvane {
namespace {

constexpr double kWidth = 1920, kHeight = 1080;
constexpr std::size_t kPoints = 100;
constexpr double kStep = 3 / kWidth;

// Of this thread's own work, so that a busy machine does not count.
double milliseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

struct Spread {
  double p50, p95, p99, worst;
};

template <typename Work>
Spread measured(int times, Work work) {
  std::vector<double> took;
  for (int i = 0; i < times; ++i) {
    const double from = milliseconds();
    work(i);
    took.push_back(milliseconds() - from);
  }
  std::sort(took.begin(), took.end());
  const auto at = [&](double part) {
    return took[static_cast<std::size_t>(part * static_cast<double>(took.size() - 1))];
  };
  return {at(0.5), at(0.95), at(0.99), took.back()};
}

void print(const char* what, const Spread& s) {
  std::printf("  %-44s p50 %8.3f  p95 %8.3f  p99 %8.3f  max %8.3f ms\n", what, s.p50, s.p95, s.p99,
              s.worst);
}

void fill(OverlayView& view, int strokes) {
  std::mt19937 random(7);
  for (int id = 0; id < strokes; ++id) {
    const auto points = wanderingStroke(random, kPoints, kStep);
    view.begin(id, points.front());
    for (std::size_t i = 1; i < points.size(); ++i) view.append(id, points[i]);
  }
}

// What one rebuild takes: until all is shown, and how long a single draw held the thread.
void rebuild(const char* what, OverlayView& view, OverlayScreen& screen) {
  view.setNeedsDisplay();
  double longest = 0;
  int draws = 0;
  const double from = milliseconds();
  for (bool drawn = true; drawn; ++draws) {
    const double began = milliseconds();
    drawn = screen.drawOnce();
    longest = std::max(longest, milliseconds() - began);
  }
  std::printf("  %-44s %.0f ms in %d draws, the longest %.1f ms\n", what, milliseconds() - from,
              draws, longest);
}

std::size_t memoryInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// What one poll brings: the events of 80 ms, applied and drawn.
void poll(OverlayView& view, OverlayScreen& screen, std::vector<InkEvent> events) {
  const bool applied = applyEvents(view, events, screen.now);
  if (isRedrawDue(view, applied, screen.now)) view.setNeedsDisplay();
  screen.settle();
}

// The same line, turned back wherever it would leave the screen.
std::vector<Point> keptOnScreen(std::vector<Point> line) {
  const auto folded = [](double value) { return std::abs(std::remainder(value, 2)); };
  for (Point& point : line) point = {folded(point.x), folded(point.y)};
  return line;
}

void benchPolls(OverlayView& view, OverlayScreen& screen, int strokes) {
  std::mt19937 random(11);
  const auto hand = keptOnScreen(wanderingStroke(random, 1200, kStep));
  const auto point = [&](int i) { return hand[static_cast<std::size_t>(i) % hand.size()]; };
  poll(view, screen, {BeginStroke{strokes, point(0)}});
  print("poll: four new points", measured(290, [&](int i) {
          std::vector<InkEvent> events;
          for (int k = 0; k < 4; ++k) events.push_back(AppendPoint{strokes, point(4 * i + k)});
          poll(view, screen, events);
        }));
  print("poll: the laser dot moves",
        measured(290, [&](int i) { poll(view, screen, {PlaceLaser{point(4 * i)}}); }));
  screen.now += 1;
  poll(view, screen, {PlaceLaser{point(0)}});
  screen.now += 1;
  print("poll: nothing new", measured(290, [&](int) { poll(view, screen, {}); }));
}

// What a careless program would hold its main thread up with.
void benchHostile() {
  OverlayView view;
  OverlayScreen screen(view, kWidth, kHeight);
  std::vector<std::int64_t> ids;
  for (int id = 0; id < 200'000; ++id) {
    view.begin(id, {0.5, 0.5});
    view.append(id, {0.5 + 1e-6 * id, 0.6});
    ids.push_back(id);
  }
  std::puts("hostile drawings");
  rebuild("200,000 strokes on top of each other", view, screen);
  print("200,000 strokes deleted at once", measured(1, [&](int) { view.remove(ids); }));
  rebuild("  and what is left drawn", view, screen);
  view.begin(1, {0.5, 0.5});
  std::mt19937 random(3);
  std::uniform_real_distribution<double> anywhere(0, 1);
  for (int i = 0; i < 20'000; ++i) view.append(1, {anywhere(random), anywhere(random)});
  rebuild("20,000 lines across the whole screen", view, screen);
}

void bench(int strokes) {
  const std::size_t before = memoryInUse();
  auto view = std::make_unique<OverlayView>();
  fill(*view, strokes);
  const double perPoint = strokes ? static_cast<double>(memoryInUse() - before) /
                                        (16.0 * kPoints * static_cast<double>(strokes))
                                  : 0;
  std::printf("%d strokes of %zu points; %.2f times the points' own memory\n", strokes, kPoints,
              perPoint);
  OverlayScreen screen(*view, kWidth, kHeight);
  rebuild("first drawing", *view, screen);
  benchPolls(*view, screen, strokes);
  view->setAspect(0.75);
  rebuild("another aspect", *view, screen);
  if (strokes > 1) {
    view->remove({strokes / 2});
    rebuild("one stroke deleted", *view, screen);
  }
  print("full repaint from nothing", measured(strokes > 5000 ? 1 : 5, [&](int) {
          const QImage image = screen.painted();
          if (image.isNull()) std::abort();
        }));
  QtCanvas from({0, 0, kWidth, kHeight}, 1), to({0, 0, kWidth, kHeight}, 1);
  print("bare blit of the whole screen", measured(50, [&](int) {
          to.copyLayer(from, {0, 0, kWidth, kHeight});
        }));
}

}  // namespace
}  // namespace torvane

int main(int count, char** arguments) {
  std::vector<int> counts = {0, 100, 10000, 100000};
  if (count > 1) counts.clear();
  for (int i = 1; i < count; ++i) counts.push_back(std::atoi(arguments[i]));
  for (const int strokes : counts) torvane::bench(strokes);
  torvane::benchHostile();
}
