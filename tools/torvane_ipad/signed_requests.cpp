#include "torvane_ipad/signed_requests.h"

#include "protocol/base64.h"
#include "protocol/p2p_frame.h"

namespace torvane::ipad {

std::optional<Reply> parseReply(ByteView frame) {
  auto decoded = P2PFrame::decode(frame);
  if (!decoded) return std::nullopt;
  const auto id = integerMember(decoded->header, "id");
  const auto status = integerMember(decoded->header, "status");
  const auto contentType = stringMember(decoded->header, "contentType");
  if (!id || !status || !contentType) return std::nullopt;
  return Reply{*id, *status, *contentType, stringMember(decoded->header, "error"),
               std::move(decoded->body)};
}

SignedRequests::Outgoing SignedRequests::makeChallengeRequest() {
  const std::int64_t id = nextId_++;
  auto frame = P2PFrame::encode({{"id", id}, {"path", "/p2p/auth"}}, {});
  return {id, std::move(*frame)};
}

bool SignedRequests::acceptChallenge(const Reply& reply) {
  const auto body = parseJsonObject(asText(reply.body));
  const auto challenge = body ? stringMember(*body, "challenge") : std::nullopt;
  if (reply.status != 200 || !challenge) return false;
  challenge_ = *challenge;
  return true;
}

std::optional<SignedRequests::Outgoing> SignedRequests::sign(const Request& request) {
  const std::int64_t id = nextId_++;
  JsonObject header{{"id", id}, {"path", request.path}, {"method", request.method}};
  if (!request.contentType.empty()) header["contentType"] = request.contentType;
  const auto inner = P2PFrame::encode(header, request.body);
  if (!inner) return std::nullopt;

  Bytes message = toBytes(challenge_);
  message.insert(message.end(), inner->begin(), inner->end());
  auto envelope = P2PFrame::encode({{"signature", base64Encode(identity_.sign(message))}}, *inner);
  if (!envelope) return std::nullopt;
  return Outgoing{id, std::move(*envelope)};
}

}  // namespace torvane::ipad
