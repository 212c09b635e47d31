#include "bridge/request_router.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "bridge/replies.h"
#include "engine/engine_requests.h"

namespace torvane {
namespace {

constexpr std::string_view kChallengePath = "/p2p/auth";  // the one request that is not signed

// The signed requests that the helper answers itself.
struct OwnRoute {
  std::string_view path;
  JsonObject (*answer)(const Bundle& bundle);
};

JsonObject bridgeInfo(const Bundle& bundle) {
  return {{"version", buildOf(bundle)}};
}

constexpr std::array kOwnRoutes = {OwnRoute{"/p2p/bridge-info", bridgeInfo}};

}  // namespace

void RequestRouter::handleRequest(const std::shared_ptr<PeerSession>& session, ByteView data,
                                  const Asker& from) {
  if (!admitted_.contains(from.peer)) return;
  const auto frame = P2PFrame::decodeView(data);
  if (!frame) return;
  const auto id = integerMember(frame->header, "id");
  if (id && stringMember(frame->header, "path") == kChallengePath) {
    answerChallenge(*id, *session, from);
    return;
  }
  auto verified = admitted_.verify(*frame, from.peer, ports_.clock.mediaTime());
  auto request = verified ? readPeerRequest(std::move(*verified)) : std::nullopt;
  if (!request || !isValidURL(engineURL(request->path))) return;
  route(std::move(*request), session, from);
}

void RequestRouter::answerChallenge(std::int64_t id, PeerSession& session, const Asker& from) {
  const auto challenge = admitted_.issueChallenge(from.peer);
  auto reply = challenge ? localReply(id, {{"challenge", *challenge}}) : std::nullopt;
  if (reply) session.sendReliably(std::move(*reply), from);
}

void RequestRouter::route(PeerRequest request, const std::shared_ptr<PeerSession>& session,
                          const Asker& from) {
  const auto own = std::find_if(kOwnRoutes.begin(), kOwnRoutes.end(),
                                [&request](const auto& each) { return each.path == request.path; });
  if (own == kOwnRoutes.end()) {
    engine_.forward(std::move(request), session, from);
    return;
  }
  auto reply = localReply(request.id, own->answer(ports_.bundle));
  if (reply) session->sendReliably(std::move(*reply), from);
}

}  // namespace torvane
