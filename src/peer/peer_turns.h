#pragma once

#include <functional>
#include <mutex>

#include "peer/round_robin.h"
#include "ports/peer_session.h"

namespace torvane {

// What peers send and do, on its way to the main queue. The events of one peer keep their order;
// the peers take turns, so that nobody waits for all that another has sent. All of them together
// have one piece of work in the main queue at a time, so that other work there waits for one event
// at most.
class PeerTurns {
 public:
  using Work = std::function<void()>;
  using Hop = std::function<void(Work)>;  // carries work to the main queue, from any thread

  // What was hopped may be dropped, never run after this object has gone.
  explicit PeerTurns(Hop hop) : hop_(std::move(hop)) {}

  // Any thread.
  void async(const PeerID& peer, Work work);

 private:
  void runOne();
  void hop() {
    hop_([this] { runOne(); });
  }

  const Hop hop_;
  std::mutex mutex_;
  RoundRobin<Work> waiting_;  // a hop is on its way while there is any
};

}  // namespace torvane
