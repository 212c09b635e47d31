#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "peer/registered_keys.h"
#include "protocol/bytes.h"

namespace torvane {

// Who invites, as far as a transport knows before it lets the program hear of it.
struct Inviter {
  std::optional<Bytes> key{};  // raw; none when an old app invites, which has none
  std::string origin{};        // see peer_origin.h; empty where the transport knows none
  bool isRegistered = false;
};

// `context` is what came with the invitation; what is no key counts as none, as for the program.
[[nodiscard]] Inviter makeInviter(const std::optional<Bytes>& context, const std::string& origin,
                                  const RegisteredKeys& registered);

struct InvitationCaps {
  // Of strangers, in any span of one minute.
  std::size_t perMinute = 30;
  std::size_t perMinuteOfOrigin = 15;
  std::size_t perMinuteOfKey = 6;
  // Each of these may raise an alert whose text the inviter has chosen, and asks nothing.
  std::size_t perMinuteWithoutKey = 6;
  std::size_t perMinuteWithoutKeyOfOrigin = 2;

  // Of strangers, not answered yet.
  std::size_t waiting = 64;
  std::size_t waitingOfOrigin = 16;
  std::size_t waitingOfKey = 4;

  // Of paired devices. They are answered without a question, so this bounds memory alone.
  std::size_t waitingRegistered = 256;
};

// Keeps a flood of invitations from reaching the program. Paired devices pass whatever strangers
// do; strangers are counted by their keys, by where they come from, and in all. Any thread.
class InvitationValve {
 public:
  explicit InvitationValve(const InvitationCaps& caps = {}) : caps_(caps) {}

  // An invitation waits for its answer for as long as this is kept, which may be longer than the
  // valve itself lasts.
  using Waiting = std::shared_ptr<const Inviter>;

  // None when the invitation is to be refused. `now`: seconds of a clock that does not go back.
  [[nodiscard]] Waiting letIn(const Inviter& inviter, double now);

 private:
  struct Recent {
    double at;
    Inviter inviter;
  };

  void forget(double now);
  [[nodiscard]] bool mayInvite(const Inviter& inviter) const;
  [[nodiscard]] bool mayWait(const Inviter& inviter) const;

  const InvitationCaps caps_;
  std::mutex mutex_;
  std::deque<Recent> recent_;  // strangers let in within the last minute
  std::vector<std::weak_ptr<const Inviter>> waiting_;
};

}  // namespace torvane
