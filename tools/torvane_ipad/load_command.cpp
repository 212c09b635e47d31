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
  const bool isUnlimited = options.requests == 0 && options.seconds == 0 && options.greedy == 0;
  return {isUnlimited ? kUsualRequests : options.requests,
          options.greedy,
          nanoseconds(options.seconds),
          options.inFlight,
          options.rate,
          options.path.empty() ? "/api/state" : options.path,
          options.echoSlides,
          nanoseconds(options.timeout)};
}

// One after the other: a helper allows few connections that have not invited it yet. The greedy
// peer, where there is one, comes last.
Sessions openSessions(HelperReach& reach, const Options& options, Exit& exit) {
  Sessions sessions;
  const std::uint32_t count = std::max(options.peers, 1U) + (options.greedy > 0 ? 1 : 0);
  for (std::uint32_t number = 1; number <= count; ++number) {
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

double perSecond(const LoadCounts& counts, std::chrono::nanoseconds time) {
  const double seconds = inSeconds(time);
  return seconds > 0 ? static_cast<double>(counts.answered) / seconds : 0;
}

// What was sent, what became of it, and how long that took.
std::string sentences(const std::string& who, const LoadCounts& counts,
                      const LatencyStats& latencies, std::chrono::nanoseconds time) {
  const auto count = [](std::uint64_t number) { return std::to_string(number); };
  return who + " sent " + count(counts.sent) + " requests in " + decimal(inSeconds(time), 2) +
         " s; " + decimal(perSecond(counts, time), 1) + " answers a second.\n" +
         "Answered: " + count(counts.answered) + ". Failed: " + count(counts.failed) +
         ". Lost: " + count(counts.lost) + ". Late: " + count(counts.late) +
         ". Doubled: " + count(counts.doubled) + ". Misdelivered: " + count(counts.misdelivered) +
         ". Broken: " + count(counts.broken) + ".\n" + "Latency: p50 " +
         milliseconds(latencies.percentile(50)) + ", p95 " +
         milliseconds(latencies.percentile(95)) + ", p99 " +
         milliseconds(latencies.percentile(99)) + ", max " + milliseconds(latencies.max()) + ".";
}

std::string sentences(const LoadResult& result, std::size_t peers, bool isGreedyToo) {
  const std::string who =
      std::to_string(peers) + (isGreedyToo ? " polite" : "") + (peers == 1 ? " peer" : " peers");
  std::string text = sentences(who, result.counts, result.latencies, result.time);
  if (isGreedyToo) {
    text += "\n" +
            sentences("The greedy peer", result.greedyCounts, result.greedyLatencies, result.time);
  }
  if (result.endedPeers > 0) {
    text += "\nConnections lost: " + std::to_string(result.endedPeers) + ".";
  }
  return text;
}

JsonObject facts(const LoadCounts& counts, const LatencyStats& latencies,
                 std::chrono::nanoseconds time) {
  const auto micros = [&](double percent) { return latencies.percentile(percent).count() / 1000; };
  return {{"perSecond", perSecond(counts, time)},
          {"sent", counts.sent},
          {"answered", counts.answered},
          {"failed", counts.failed},
          {"lost", counts.lost},
          {"late", counts.late},
          {"doubled", counts.doubled},
          {"misdelivered", counts.misdelivered},
          {"broken", counts.broken},
          {"p50us", micros(50)},
          {"p95us", micros(95)},
          {"p99us", micros(99)},
          {"maxus", micros(100)}};
}

JsonObject facts(const LoadResult& result, std::size_t peers, bool isGreedyToo) {
  JsonObject all = facts(result.counts, result.latencies, result.time);
  all["peers"] = peers;
  all["seconds"] = inSeconds(result.time);
  all["connectionsLost"] = result.endedPeers;
  if (isGreedyToo) {
    all["greedy"] = facts(result.greedyCounts, result.greedyLatencies, result.time);
  }
  return all;
}

}  // namespace

Exit runLoad(const Options& options, const Console& console) {
  Exit exit = Exit::ok;
  const auto reach = HelperReach::prepare(options, console, exit);
  if (!reach) return exit;
  Sessions sessions = openSessions(*reach, options, exit);
  if (sessions.empty()) return exit;

  const LoadResult result = runUntilDone(*reach, planFrom(options), sessions);
  const bool isGreedyToo = options.greedy > 0;
  const std::size_t polite = sessions.size() - (isGreedyToo ? 1 : 0);
  console.say("load", sentences(result, polite, isGreedyToo), facts(result, polite, isGreedyToo));
  if (result.endedPeers == sessions.size()) return Exit::noConnection;
  const bool isFaultless = result.counts.isFaultless() && result.greedyCounts.isFaultless();
  return isFaultless && result.endedPeers == 0 ? Exit::ok : Exit::refused;
}

}  // namespace torvane::ipad
