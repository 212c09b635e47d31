#include "peer/peer_turns.h"

#include <utility>

namespace torvane {

void PeerTurns::async(const PeerID& peer, Work work) {
  bool isFirst = false;
  {
    const std::lock_guard lock(mutex_);
    isFirst = waiting_.empty();
    waiting_.put(peer.token, std::move(work));
  }
  if (isFirst) hop();
}

void PeerTurns::runOne() {
  std::optional<Work> work;
  bool isMoreWaiting = false;
  {
    const std::lock_guard lock(mutex_);
    work = waiting_.take();
    isMoreWaiting = !waiting_.empty();
  }
  // Before the work, which may show an alert: its nested loop goes on with the others.
  if (isMoreWaiting) hop();
  if (work) (*work)();
}

}  // namespace torvane
