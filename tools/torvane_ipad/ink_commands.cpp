// Ink on the slide that is shown: strokes, the laser dot, and taking strokes away again.

#include <sodium.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/engine_session.h"
#include "torvane_ipad/ink_figures.h"
#include "torvane_ipad/ink_strokes.h"
#include "torvane_ipad/interrupt.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// As often as an iPad sends while a pen moves.
constexpr double kSendsPerSecond = 25;
constexpr double kUsualDrawingTime = 1;    // seconds
constexpr std::size_t kUsualPoints = 101;  // so that the star has its tips
constexpr double kLaserLap = 2;            // seconds for a figure there and back

constexpr std::size_t kMostFileBytes = 16 * 1024 * 1024;
constexpr std::size_t kMostEventsPerRequest = 5000;  // well under the engine's 1 MiB

// The engine's state after these events; none when they did not get there.
std::optional<JsonObject> send(EngineSession& session, JsonArray events) {
  return session.post("/api/ink", {{"events", std::move(events)}});
}

// Positive, so that it is easily typed, and unlikely to have been used on the slide before.
std::int64_t newStrokeId() {
  return 1 + std::int64_t{randombytes_random()} * 4096;
}

// What is to be drawn; none after the reason was reported.
std::optional<Strokes> strokesToDraw(const Options& options, const Console& console) {
  if (options.operands.empty()) {
    const std::size_t points = options.points > 0 ? options.points : kUsualPoints;
    return Strokes{figureStroke(options.figure.empty() ? "spiral" : options.figure, points)};
  }
  const std::string& name = options.operands[0];
  const auto text =
      name == "-" ? readStandardInput(kMostFileBytes) : readFile(name, kMostFileBytes);
  if (!text) {
    (void)console.fail(Exit::usage, name + " cannot be read or is larger than 16 MB.");
    return std::nullopt;
  }
  StrokeFile file = parseStrokes(*text);
  if (file.wrongLine > 0) {
    (void)console.fail(Exit::usage, "Line " + std::to_string(file.wrongLine) + " of " + name +
                                        " is no point: two numbers are expected.");
    return std::nullopt;
  }
  return std::move(file.strokes);
}

// Sends the parts evenly over `seconds`. How many events that were when it was interrupted or done;
// none when a part did not get there.
std::optional<std::size_t> sendInTime(EngineSession& session, const std::vector<JsonArray>& parts,
                                      double seconds) {
  const auto start = Clock::now();
  std::size_t sent = 0;
  for (std::size_t i = 0; i < parts.size() && !wasInterrupted(); ++i) {
    const double due = seconds * static_cast<double>(i) / static_cast<double>(parts.size());
    sleepUnlessInterrupted(start + Seconds(due) - Clock::now());
    if (!send(session, parts[i])) return std::nullopt;
    sent += parts[i].size();
  }
  return sent;
}

std::string countOf(std::size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

JsonArray laserEvent(Point at) {
  return JsonArray{JsonObject{{"t", "laser"}, {"x", at.x}, {"y", at.y}}};
}

JsonArray plainEvent(const char* kind) {
  return JsonArray{JsonObject{{"t", kind}}};
}

// Along the figure and back.
Point laserPoint(const std::string& figure, Seconds time) {
  const double lap = std::fmod(time.count(), kLaserLap) / kLaserLap;
  return figurePoint(figure.empty() ? "circle" : figure, 1 - std::abs(2 * lap - 1));
}

}  // namespace

Exit drawInk(const Options& options, const Console& console) {
  const auto strokes = strokesToDraw(options, console);
  if (!strokes) return Exit::usage;
  const std::int64_t firstId = newStrokeId();
  const JsonArray events = strokeEvents(*strokes, firstId);
  if (events.empty()) return console.fail(Exit::usage, "There is nothing to draw.");
  EngineSession session(options, console);
  if (!session.isOpen()) return session.exit();

  noticeInterrupts();
  const double seconds = options.duration > 0 ? options.duration : kUsualDrawingTime;
  const auto parts = sharedOut(events, static_cast<std::size_t>(seconds * kSendsPerSecond) + 1,
                               kMostEventsPerRequest);
  const auto sent = sendInTime(session, parts, seconds);
  if (!sent) return session.exit();
  console.say("draw", "Drew " + countOf(*sent, "point") + ".",
              {{"points", *sent}, {"strokes", strokes->size()}, {"firstId", firstId}});
  return Exit::ok;
}

Exit moveLaser(const Options& options, const Console& console) {
  EngineSession session(options, console);
  if (!session.isOpen()) return session.exit();
  noticeInterrupts();
  const auto start = Clock::now();
  Seconds time(0);
  std::size_t places = 0;
  while (!wasInterrupted() && (options.forTime == 0 || time.count() < options.forTime)) {
    if (!send(session, laserEvent(laserPoint(options.figure, time)))) return session.exit();
    ++places;
    sleepUnlessInterrupted(start + time + Seconds(1 / kSendsPerSecond) - Clock::now());
    time = Clock::now() - start;
  }
  if (!send(session, plainEvent("laserend"))) return session.exit();
  console.say("laser", "The laser dot went to " + countOf(places, "place") + ".",
              {{"places", places}});
  return Exit::ok;
}

Exit clearInk(const Options& options, const Console& console) {
  EngineSession session(options, console);
  if (!session.isOpen() || !send(session, plainEvent("clear"))) return session.exit();
  console.say("clear", "The slide has no ink any more.", {});
  return Exit::ok;
}

Exit undoStroke(const Options& options, const Console& console) {
  EngineSession session(options, console);
  const auto state = session.isOpen() ? session.post("/api/ink/undo") : std::nullopt;
  if (!state) return session.exit();
  const auto left = integerMember(*state, "strokes").value_or(0);
  console.say("undo", "The slide has " + countOf(static_cast<std::size_t>(left), "stroke") + ".",
              {{"strokes", left}});
  return Exit::ok;
}

}  // namespace torvane::ipad
