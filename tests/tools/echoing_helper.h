#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/linux/peer_link.h"
#include "protocol/p2p_authentication.h"
#include "protocol/uuid.h"
#include "support/temporary_folder.h"

namespace torvane::ipad {

// A helper on the real peer link that pairs every device and answers its requests with their
// paths. Everything but start() happens on the link's thread.
class EchoingHelper : public PeerSessionDelegate, public AdvertiserDelegate {
 public:
  EchoingHelper() {
    PeerLinkOptions options;
    options.preferredPort = 0;
    options.dataFolder = folder_ / "data";
    options.isPublished = false;
    options.didListen = [this](const LinkAddress& address) {
      const std::lock_guard lock(mutex_);
      address_ = address;
      listens_.notify_all();
    };
    link_ = std::make_unique<WebSocketPeerLink>(std::move(options));
    const PeerID self = link_->makePeerID("Echo");
    session_ = link_->makeSession(self, *this);
    advertiser_ = link_->makeAdvertiser(self, "torvane", registered_, *this);
  }

  // None when it does not listen after a long time.
  [[nodiscard]] std::optional<LinkAddress> start() {
    advertiser_->start();
    std::unique_lock lock(mutex_);
    listens_.wait_for(lock, std::chrono::seconds(20), [this] { return address_.has_value(); });
    return address_;
  }

  // What the user would be shown for the last invitation.
  [[nodiscard]] std::optional<std::string> digits() {
    const std::lock_guard lock(mutex_);
    return digits_;
  }

 private:
  struct Device {
    SigningPublicKey key;
    std::string challenge = randomUUID();
    ReceivedIDs receivedIDs{};
  };

  void advertiserDidNotStart(std::string) override {}
  void advertiserDidRecover() override {}

  void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) override {
    const auto key = SigningPublicKey::fromRaw(invitation.context.value_or(Bytes{}));
    if (key) {
      registered_->insert(key->deviceKey());
      devices_.emplace(invitation.peer.token, Device{*key});
    }
    const std::lock_guard lock(mutex_);
    digits_ = invitation.digits;
    handler(key.has_value(), key ? session_ : nullptr);
  }

  void sessionPeerDidChange(std::shared_ptr<PeerSession>, PeerID, PeerState) override {}

  void sessionDidReceive(std::shared_ptr<PeerSession> session, Bytes data, Asker from) override {
    Device& device = devices_.at(from.peer.token);
    const auto frame = P2PFrame::decode(data);
    if (frame && stringMember(frame->header, "path") == "/p2p/auth") {
      return reply(*session, from, frame->header, {{"challenge", device.challenge}});
    }
    const auto request =
        P2PAuthentication::verify(data, device.key, device.challenge, device.receivedIDs);
    if (!request) return;
    const std::string path = stringMember(request->header, "path").value_or("");
    reply(*session, from, request->header, {{"path", path}, {"version", "1"}});
  }

  static void reply(PeerSession& session, const Asker& from, const JsonObject& header,
                    const JsonObject& body) {
    const auto id = integerMember(header, "id");
    const auto text = serializeJson(body);
    if (!id || !text) return;
    const auto frame = P2PFrame::encode(
        {{"id", *id}, {"status", 200}, {"contentType", "application/json"}}, asBytes(*text));
    if (frame) session.sendReliably(*frame, from);
  }

  TemporaryFolder folder_;
  std::mutex mutex_;
  std::condition_variable listens_;
  std::optional<LinkAddress> address_;
  std::optional<std::string> digits_;
  std::map<std::uint64_t, Device> devices_;
  const std::shared_ptr<RegisteredKeys> registered_ = std::make_shared<RegisteredKeys>();
  std::shared_ptr<PeerSession> session_;
  std::unique_ptr<WebSocketPeerLink> link_;
  std::unique_ptr<Advertiser> advertiser_;
};

}  // namespace torvane::ipad
