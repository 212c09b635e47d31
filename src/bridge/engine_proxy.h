#pragma once

#include <functional>
#include <memory>

#include "bridge/engine_request.h"
#include "ports/http_session.h"
#include "ports/peer_session.h"

namespace torvane {

// Sends verified requests to the engine, and its answers back to who asked. Main thread only.
class EngineProxy {
 public:
  // `didTakeSomething` is called on any thread after the engine has answered a request that may
  // have changed something: any but GET and HEAD (safe methods of RFC 9110, section 9.2.1).
  EngineProxy(HttpSessions& sessions, std::function<void()> didTakeSomething)
      : sessions_(sessions), didTakeSomething_(std::move(didTakeSomething)) {}

  void forward(PeerRequest request, const std::shared_ptr<PeerSession>& session, const Asker& from);

 private:
  HttpSessions& sessions_;
  const std::function<void()> didTakeSomething_;
  std::unique_ptr<HttpSession> http;  // made at the first request
};

}  // namespace torvane
