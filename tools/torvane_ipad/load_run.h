#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "torvane_ipad/helper_session.h"
#include "torvane_ipad/load_tally.h"

namespace torvane::ipad {

struct LoadPlan {
  std::uint64_t requests = 0;       // of all polite peers; 0: no limit
  std::uint64_t greedy = 0;         // of the last peer, all at once; 0: all are polite
  std::chrono::nanoseconds time{};  // how long to send; 0: no limit
  std::uint32_t inFlight = 1;       // of each polite peer
  double rate = 0;                  // requests a second of these; 0: no limit
  std::string path;
  std::uint32_t echoSlides = 0;
  std::chrono::nanoseconds timeout{};  // after which a request counts as lost
};

// The request that peer `peer` sends as its `number`th, and what its answer must be about.
struct LoadRequest {
  Request request;
  LoadMark mark;
};
[[nodiscard]] LoadRequest makeLoadRequest(const LoadPlan& plan, std::size_t peer,
                                          std::uint64_t number);

// The first id of a peer: the ranges of two peers never meet.
[[nodiscard]] std::int64_t firstLoadId(std::size_t peer);

struct LoadResult {
  LoadCounts counts;
  LatencyStats latencies;
  LoadCounts greedyCounts;  // of the greedy peer, who is not in the above
  LatencyStats greedyLatencies;
  std::chrono::nanoseconds time{};  // from the first request to the last answer
  std::size_t endedPeers = 0;       // whose connection was lost
};

// Keeps requests in flight from every session until the plan is fulfilled or it is stopped. Polite
// peers without a limit go on until the greedy one has its answers.
// Everything but start(), stop() and result() happens on the network's thread.
class LoadRun : public std::enable_shared_from_this<LoadRun> {
 public:
  using Time = std::chrono::steady_clock::time_point;

  LoadRun(PeerNetwork& network, LoadPlan plan) : network_(network), plan_(std::move(plan)) {}

  // The sessions are authenticated and outlive the result.
  void start(std::vector<std::unique_ptr<HelperSession>>& sessions);
  void stop();
  [[nodiscard]] std::future<LoadResult> result() { return result_.get_future(); }

 private:
  struct Peer {
    HelperSession* session;
    LoadTally tally;
    std::uint64_t quota;  // 0: no limit
    Time nextDue{};
    bool isGreedy = false;
    Time lastAnswerAt{};
    bool isTimerSet = false;
    bool hasEnded = false;
  };

  void begin();
  void pump(std::size_t index);
  void pumpGreedily(std::size_t index);
  void sendOne(std::size_t index, Time now);
  void expire(Peer& peer, Time now) const;
  [[nodiscard]] bool waitsForItsTime(std::size_t index, Time now);
  void received(std::size_t index, const Bytes& frame);
  void ended(std::size_t index);
  void tick();
  [[nodiscard]] bool isDone() const;
  [[nodiscard]] static bool hasSentAll(const Peer& peer);
  [[nodiscard]] bool isDone(const Peer& peer) const;
  void finish();

  PeerNetwork& network_;
  LoadPlan plan_;
  std::vector<Peer> peers_;
  std::chrono::nanoseconds interval_{};  // between two requests of one peer
  Time startedAt_;
  Time lastAnswerAt_;
  std::optional<Time> quietSince_;
  bool isStopping_ = false;
  std::promise<LoadResult> result_;
};

}  // namespace torvane::ipad
