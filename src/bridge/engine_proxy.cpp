// A verified request goes to the engine; its answer goes back to the peer that asked.
// Fields: http. Ports: HttpSessions, HttpSession, PeerSession.

#include "app/bridge_delegate.h"
#include "bridge/replies.h"

namespace torvane {
namespace {

constexpr double kSessionIdleTimeout = 120;

}  // namespace

void BridgeDelegate::forwardToEngine(PeerRequest request, const PeerID& peer) {
  assertMainThread();
  // The answer leaves from the HTTP session's thread and touches no field.
  auto answer = [id = request.id, into = session, peer](const HttpResult& result) {
    auto reply = engineReply(id, result);
    if (reply) into->sendReliably(std::move(*reply), peer);
  };
  if (auto problem = wireProblem(request)) {
    answer({.response = std::nullopt, .body = {}, .error = std::move(problem)});
    return;
  }
  if (!http) http = platform_.http.makeEphemeral(kSessionIdleTimeout);
  http->dataTask(forwardedRequest(std::move(request)), std::move(answer));
}

}  // namespace torvane
