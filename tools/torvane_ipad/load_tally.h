#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "torvane_ipad/latency_stats.h"
#include "torvane_ipad/signed_requests.h"

namespace torvane::ipad {

struct LoadCounts {
  std::uint64_t sent = 0;
  std::uint64_t answered = 0;  // once, in time, each with its own answer
  std::uint64_t failed = 0;    // of the answered ones: a status of 400 or more
  std::uint64_t lost = 0;
  std::uint64_t late = 0;
  std::uint64_t doubled = 0;
  std::uint64_t misdelivered = 0;
  std::uint64_t broken = 0;

  LoadCounts& operator+=(const LoadCounts& other);
  [[nodiscard]] bool isFaultless() const;
};

// What tells a request's own answer from the answer to another one.
struct LoadMark {
  std::string mark;                   // a body with a "load=" in it must go on with this
  std::optional<std::int64_t> slide;  // a JSON body must name this slide
};

[[nodiscard]] bool isAbout(const LoadMark& mark, const Reply& reply);

// Matches the answers that one peer gets with the requests that it sent. Peers use ranges of ids
// that do not meet, so an answer to another peer's request is noticed by its id.
class LoadTally {
 public:
  using Time = std::chrono::steady_clock::time_point;

  void requestSent(std::int64_t id, Time now, LoadMark mark = {});
  void frameReceived(ByteView frame, Time now);

  // Gives up on requests that were sent before `limit`.
  void expire(Time limit);

  [[nodiscard]] std::size_t inFlight() const { return inFlight_.size(); }
  [[nodiscard]] const LoadCounts& counts() const { return counts_; }
  [[nodiscard]] const LatencyStats& latencies() const { return latencies_; }

 private:
  struct Sent {
    Time at;
    LoadMark mark;
  };

  void answered(const Sent& request, const Reply& reply, Time now);
  void surplus(std::int64_t id);

  std::map<std::int64_t, Sent> inFlight_;
  std::set<std::int64_t> expired_;
  std::int64_t firstId_ = 0;
  std::int64_t lastId_ = -1;
  LoadCounts counts_;
  LatencyStats latencies_;
};

}  // namespace torvane::ipad
