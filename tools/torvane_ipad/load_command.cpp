// Many requests, measured and checked.

#include <cstdio>

#include "torvane_ipad/commands.h"
#include "torvane_ipad/interrupt.h"
#include "torvane_ipad/load_run.h"
#include "torvane_ipad/reach_helper.h"

namespace torvane::ipad {
namespace {

constexpr std::uint64_t kUsualRequests = 1000;

using Sessions = std::vector<std::unique_ptr<HelperSession>>;

std::chrono::nanoseconds nanoseconds(double seconds) {
  return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
}

LoadPlan planFrom(const Options& options) {
  const bool isUnlimited = options.requests == 0 && options.seconds == 0;
  return {isUnlimited ? kUsualRequests : options.requests,
          nanoseconds(options.seconds),
          options.inFlight,
          options.rate,
          options.path,
          options.echoSlides,
          nanoseconds(options.timeout)};
}

// One after the other: a helper allows few connections that have not invited it yet.
Sessions openSessions(HelperReach& reach, std::uint32_t peers, Exit& exit) {
  Sessions sessions;
  for (std::uint32_t number = 1; number <= std::max(peers, 1U); ++number) {
    auto session = reach.open({number, firstLoadId(number)}, exit);
    if (!session) return {};
    sessions.push_back(std::move(session));
  }
  return sessions;
}

LoadResult runUntilDone(HelperReach& reach, const LoadPlan& plan, Sessions& sessions) {
  noticeInterrupts();
  const auto run = std::make_shared<LoadRun>(reach.network(), plan);
  auto result = run->result();
  run->start(sessions);
  bool isStopped = false;
  while (result.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
    if (wasInterrupted() && !isStopped) run->stop();
    isStopped = wasInterrupted();
  }
  return result.get();
}

double inSeconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double>(time).count();
}

std::string decimal(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string milliseconds(std::chrono::nanoseconds time) {
  return decimal(inSeconds(time) * 1000, 3) + " ms";
}

double answersPerSecond(const LoadResult& result) {
  const double seconds = inSeconds(result.time);
  return seconds > 0 ? static_cast<double>(result.counts.answered) / seconds : 0;
}

std::string sentences(const LoadResult& result, std::size_t peers) {
  const LoadCounts& counts = result.counts;
  const LatencyStats& latencies = result.latencies;
  const auto count = [](std::uint64_t number) { return std::to_string(number); };
  std::string text = count(peers) + (peers == 1 ? " peer sent " : " peers sent ") +
                     count(counts.sent) + " requests in " + decimal(inSeconds(result.time), 2) +
                     " s; " + decimal(answersPerSecond(result), 1) + " answers a second.\n";
  text += "Answered: " + count(counts.answered) + ". Failed: " + count(counts.failed) +
          ". Lost: " + count(counts.lost) + ". Late: " + count(counts.late) +
          ". Doubled: " + count(counts.doubled) + ". Misdelivered: " + count(counts.misdelivered) +
          ". Broken: " + count(counts.broken) + ".\n";
  if (result.endedPeers > 0) {
    text += "Connections lost: " + count(result.endedPeers) + ".\n";
  }
  return text + "Latency: p50 " + milliseconds(latencies.percentile(50)) + ", p95 " +
         milliseconds(latencies.percentile(95)) + ", p99 " +
         milliseconds(latencies.percentile(99)) + ", max " + milliseconds(latencies.max()) + ".";
}

JsonObject facts(const LoadResult& result, std::size_t peers) {
  const LoadCounts& counts = result.counts;
  const auto micros = [&](double percent) {
    return result.latencies.percentile(percent).count() / 1000;
  };
  return {{"peers", peers},
          {"seconds", inSeconds(result.time)},
          {"perSecond", answersPerSecond(result)},
          {"sent", counts.sent},
          {"answered", counts.answered},
          {"failed", counts.failed},
          {"lost", counts.lost},
          {"late", counts.late},
          {"doubled", counts.doubled},
          {"misdelivered", counts.misdelivered},
          {"broken", counts.broken},
          {"connectionsLost", result.endedPeers},
          {"p50us", micros(50)},
          {"p95us", micros(95)},
          {"p99us", micros(99)},
          {"maxus", micros(100)}};
}

}  // namespace

Exit runLoad(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit);
  if (!reach) return exit;
  Sessions sessions = openSessions(*reach, options.peers, exit);
  if (sessions.empty()) return exit;

  const LoadResult result = runUntilDone(*reach, planFrom(options), sessions);
  console.say("load", sentences(result, sessions.size()), facts(result, sessions.size()));
  if (result.endedPeers == sessions.size()) return Exit::noConnection;
  return result.counts.isFaultless() && result.endedPeers == 0 ? Exit::ok : Exit::refused;
}

}  // namespace torvane::ipad
