#pragma once

#include <map>
#include <optional>
#include <string>

#include "ports/peer_session.h"
#include "protocol/device_key.h"
#include "protocol/p2p_frame.h"
#include "protocol/received_ids.h"
#include "protocol/token_bucket.h"

namespace torvane {

// What is known of each peer whose invitation was accepted, until it drops. Main thread only.
class AdmittedPeers {
 public:
  // Of a peer that is there already its key alone is replaced.
  void admit(const PeerID& peer, const SigningPublicKey& key);
  void drop(const PeerID& peer);
  [[nodiscard]] bool isEmpty() const { return peers_.empty(); }
  [[nodiscard]] bool contains(const PeerID& peer) const { return peers_.count(peer) != 0; }

  // What the peer has to sign with each request. One for a connection: asking again does not
  // invalidate what is signed already. None for a peer that was not admitted.
  [[nodiscard]] std::optional<std::string> issueChallenge(const PeerID& peer);

  // The request in a peer's envelope, as P2PAuthentication::verify() gives it. None, too, when no
  // challenge was issued, and for a peer that has sent too much that does not verify. `now`: media
  // time in seconds.
  [[nodiscard]] std::optional<P2PFrame::Frame> verify(const P2PFrame::View& envelope,
                                                      const PeerID& peer, double now);

 private:
  // A connection may burn this much of our time with signatures that do not verify.
  static constexpr double kFailedVerificationBurst = 100;
  static constexpr double kFailedVerificationsPerSecond = 20;

  struct Record {
    SigningPublicKey key;
    std::string challenge{};  // empty until it is asked for
    ReceivedIDs receivedIDs{};
    TokenBucket failedVerifications{kFailedVerificationBurst, kFailedVerificationsPerSecond};
  };

  std::map<PeerID, Record> peers_;
};

}  // namespace torvane
