#include "bridge/engine_proxy.h"

#include <algorithm>

#include "bridge/replies.h"

namespace torvane {
namespace {

constexpr double kSessionIdleTimeout = 120;

}  // namespace

void EngineProxy::forward(PeerRequest request, const std::shared_ptr<PeerSession>& session,
                          const Asker& from) {
  // The answer leaves from the HTTP session's thread and touches no field.
  const bool isSafe = request.method == "GET" || request.method == "HEAD";
  auto answer = [id = request.id, into = session, from,
                 didTake = isSafe ? nullptr : didTakeSomething_](const HttpResult& result) {
    auto reply = engineReplyWithin(into->longestMessage(), id, result);
    if (reply) into->sendReliably(std::move(*reply), from);
    if (didTake && result.response) didTake();
  };
  if (auto problem = wireProblem(request)) {
    answer({.response = std::nullopt, .body = {}, .error = std::move(problem)});
    return;
  }
  if (!http) http = sessions_.makeEphemeral(kSessionIdleTimeout);
  auto forwarded = forwardedRequest(std::move(request));
  forwarded.lane = from.peer.token;
  forwarded.maxResponseBytes =
      std::min<std::uint64_t>(forwarded.maxResponseBytes, session->longestMessage());
  http->dataTask(std::move(forwarded), std::move(answer));
}

}  // namespace torvane
