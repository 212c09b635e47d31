#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "peer/invitation_valve.h"
#include "peer/receive_budget.h"

namespace torvane {

using LinkClock = std::chrono::steady_clock;
using LinkTime = LinkClock::time_point;

struct PeerLinkTimes {
  std::chrono::milliseconds handshake{10'000};  // from the TCP connection to the invitation
  std::chrono::milliseconds ping{3'000};        // of silence before a ping
  std::chrono::milliseconds dead{9'000};        // of silence before the connection is dropped
  std::chrono::milliseconds close{3'000};       // for the closing handshake
};

// How often to look at what has become of each connection.
[[nodiscard]] std::chrono::milliseconds tickOf(const PeerLinkTimes& times);

// As the core's limits want a time.
[[nodiscard]] inline double secondsOf(LinkTime time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

struct PeerLinkCaps {
  std::size_t strangers = 16;  // connections that have not sent their invitation
  InvitationCaps invitations{};
  std::size_t connected = 256;             // with the paired devices that wait for their answer
  std::size_t failedProofsPerMinute = 30;  // of one origin
  std::size_t messageBytes = std::size_t{16} << 20;
  std::size_t unsentBytes = std::size_t{64} << 20;  // for one peer
  ReceiveShares received{};
};

// When to ping a silent peer and when to give it up.
class PeerLiveness {
 public:
  enum class Action { none, ping, drop };

  PeerLiveness(const PeerLinkTimes& times, LinkTime now)
      : times_(times), heard_(now), pinged_(now), deadline_(now + times.handshake) {}

  void heard(LinkTime now) { heard_ = now; }
  void invited(LinkTime now) { deadline_.reset(), heard_ = now; }
  void closing(LinkTime now) { deadline_ = now + times_.close; }

  // While nothing is read from the peer on purpose, its silence means nothing.
  [[nodiscard]] Action tick(LinkTime now, bool isReading);

 private:
  PeerLinkTimes times_;
  LinkTime heard_;
  LinkTime pinged_;
  std::optional<LinkTime> deadline_;  // for the handshake, later for closing
};

}  // namespace torvane
