#pragma once

#include <cstdint>
#include <memory>

#include "bridge/engine_proxy.h"
#include "peer/admitted_peers.h"
#include "ports/bundle.h"
#include "ports/clock.h"
#include "ports/peer_session.h"
#include "protocol/bytes.h"

namespace torvane {

// From a received message to the route that answers it. Whatever fails a check is dropped without
// a word: the sender never learns why. Main thread only.
class RequestRouter {
 public:
  struct Ports {
    const Bundle& bundle;
    const Clock& clock;
  };

  RequestRouter(const Ports& ports, AdmittedPeers& admitted, EngineProxy& engine)
      : ports_(ports), admitted_(admitted), engine_(engine) {}

  // `session` is the one that the message came by.
  void handleRequest(const std::shared_ptr<PeerSession>& session, ByteView data, const Asker& from);

 private:
  void answerChallenge(std::int64_t id, PeerSession& session, const Asker& from);
  void route(PeerRequest request, const std::shared_ptr<PeerSession>& session, const Asker& from);

  const Ports ports_;
  AdmittedPeers& admitted_;
  EngineProxy& engine_;
};

}  // namespace torvane
