#include "platform/linux/peer_link_limits.h"

#include <algorithm>
#include <utility>

namespace torvane {
namespace {

constexpr std::chrono::milliseconds kShortestTick{5};
constexpr std::chrono::milliseconds kLongestTick{500};

}  // namespace

std::chrono::milliseconds tickOf(const PeerLinkTimes& times) {
  const auto shortest = std::min({times.handshake, times.ping, times.dead, times.close});
  return std::clamp(shortest / 6, kShortestTick, kLongestTick);
}

PeerLiveness::Action PeerLiveness::tick(LinkTime now, bool isReading) {
  if (deadline_) return now >= *deadline_ ? Action::drop : Action::none;
  if (!isReading) heard_ = now;
  if (now - heard_ >= times_.dead) return Action::drop;
  if (now - std::max(heard_, pinged_) < times_.ping) return Action::none;
  pinged_ = now;
  return Action::ping;
}

}  // namespace torvane
