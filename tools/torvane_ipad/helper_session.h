#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "torvane_ipad/peer_connection.h"
#include "torvane_ipad/signed_requests.h"

namespace torvane::ipad {

// A device's connection to a helper for callers that wait: invited, authenticated, then one
// request after the other.
class HelperSession {
 public:
  using Duration = std::chrono::milliseconds;
  using Receiver = std::function<void(Bytes frame)>;
  using EndListener = std::function<void()>;

  HelperSession(PeerNetwork& network, const DeviceIdentity& identity, Duration timeout,
                std::int64_t firstId = 1);
  ~HelperSession();
  HelperSession(const HelperSession&) = delete;
  HelperSession& operator=(const HelperSession&) = delete;

  // Connects and waits until the helper accepts. `onWaiting` is called once when the helper's
  // user seems to have been asked.
  [[nodiscard]] std::variant<Welcome, LinkFailure> invite(
      const ConnectionSettings& settings, Duration approval,
      const std::function<void(const Welcome&)>& onWaiting);

  // Asks for the challenge that requests are signed with.
  [[nodiscard]] std::optional<LinkFailure> authenticate();

  // Waits for the answer as long as the constructor was told, or for `patience` where that is more.
  [[nodiscard]] std::variant<Reply, LinkFailure> request(const Request& request,
                                                         Duration patience = {});

  // Sends a frame as it is.
  void send(const Bytes& frame);

  // All answers that come up to the one with this id, which is the last.
  [[nodiscard]] std::variant<std::vector<Reply>, LinkFailure> repliesUntil(std::int64_t id);

  [[nodiscard]] SignedRequests& requests() { return requests_; }

  // From now on frames go to `receiver`, on the network's thread, and the end to `onEnd`.
  void divert(Receiver receiver, EndListener onEnd);

 private:
  class Mailbox;

  PeerNetwork& network_;
  DeviceIdentity identity_;
  SignedRequests requests_;
  Duration timeout_;
  std::shared_ptr<Mailbox> mailbox_;
  std::shared_ptr<PeerConnection> connection_;
};

}  // namespace torvane::ipad
