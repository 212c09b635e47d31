// The two requests that the helper answers itself.
// Fields: challenges. Ports: PeerSession.

#include "app/bridge_delegate.h"
#include "bridge/replies.h"
#include "protocol/uuid.h"

namespace torvane {

// One challenge per connection: asking again must not invalidate what is signed already.
void BridgeDelegate::answerChallenge(std::int64_t id, const Asker& from) {
  auto& challenge = challenges[from.peer];
  if (challenge.empty()) challenge = randomUUID();
  auto reply = localReply(id, {{"challenge", challenge}});
  if (reply) session->sendReliably(std::move(*reply), from);
}

void BridgeDelegate::answerBridgeInfo(std::int64_t id, const Asker& from) {
  auto reply = localReply(id, {{"version", myVersion()}});
  if (reply) session->sendReliably(std::move(*reply), from);
}

}  // namespace torvane
