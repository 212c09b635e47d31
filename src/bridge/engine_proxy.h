#pragma once

#include <memory>

#include "bridge/engine_request.h"
#include "ports/http_session.h"
#include "ports/peer_session.h"

namespace torvane {

// Sends verified requests to the engine, and its answers back to who asked. Main thread only.
class EngineProxy {
 public:
  explicit EngineProxy(HttpSessions& sessions) : sessions_(sessions) {}

  void forward(PeerRequest request, const std::shared_ptr<PeerSession>& session, const Asker& from);

 private:
  HttpSessions& sessions_;
  std::unique_ptr<HttpSession> http;  // made at the first request
};

}  // namespace torvane
