#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/peer_link.h"
#include "support/event_queue.h"
#include "support/link_client.h"
#include "support/temporary_folder.h"

namespace torvane::testing {

// A real peer link on a free port of this computer, unpublished, with its events kept.
class LinkHost final : public PeerSessionDelegate, public AdvertiserDelegate {
 public:
  struct Change {
    std::shared_ptr<PeerSession> session;
    PeerID peer;
    PeerState state;
    std::vector<PeerID> connectedPeers;  // as the session said inside the call
  };
  struct Received {
    std::shared_ptr<PeerSession> session;
    Bytes data;
    PeerID peer;
    MessageLease lease;
  };
  struct Invited {
    PeerID peer;
    std::optional<Bytes> context;
    InvitationHandler handler;
    std::optional<std::string> digits;
  };

  explicit LinkHost(PeerLinkOptions options = {}) {
    options.preferredPort = options.preferredPort == kPeerLinkPort ? 0 : options.preferredPort;
    if (options.dataFolder.empty()) options.dataFolder = folder_.path() + "/data";
    options.isPublished = false;
    options.didListen = [this](const LinkAddress& heard) { listening.put(heard); };
    link = std::make_unique<WebSocketPeerLink>(std::move(options));
    self = link->makePeerID("Test computer");
    session = link->makeSession(self, *this);
    advertiser = link->makeAdvertiser(self, "torvane", registered, *this);
  }

  // Starts to listen; the port, 0 when that failed.
  std::uint16_t start() {
    advertiser->start();
    const auto heard = listening.next();
    if (heard) address = *heard;
    return address.port;
  }

  [[nodiscard]] LinkClient::Options clientOptions() const {
    LinkClient::Options options;
    options.port = address.port;
    return options;
  }

  // Lets the next invitation in, or not; false when none came.
  bool answerNext(bool accept) {
    const auto invited = invitations.next();
    if (!invited) return false;
    invited->handler(accept, accept ? session : nullptr);
    return true;
  }

  // A client that is connected, with the host's events of that taken off the queues.
  bool admit(LinkClient& client, const std::string& name, const DeviceKeyPair& key) {
    return client.invite(name, key) == "waiting" && answerNext(true) &&
           client.outcome() == "accepted" && changes.next() && changes.next();
  }

  void sessionPeerDidChange(std::shared_ptr<PeerSession> reporting, PeerID peer,
                            PeerState state) override {
    auto connected = reporting->connectedPeers();
    changes.put({std::move(reporting), std::move(peer), state, std::move(connected)});
  }
  void sessionDidReceive(std::shared_ptr<PeerSession> reporting, Bytes data, Asker from) override {
    received.put({std::move(reporting), std::move(data), from.peer, std::move(from.lease)});
  }
  void advertiserDidNotStart(std::string error) override { errors.put(std::move(error)); }
  void advertiserDidRecover() override {}
  void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) override {
    invitations.put({std::move(invitation.peer), std::move(invitation.context), std::move(handler),
                     std::move(invitation.digits)});
  }

  EventQueue<Change> changes;
  EventQueue<Received> received;
  EventQueue<Invited> invitations;
  EventQueue<std::string> errors;
  EventQueue<LinkAddress> listening;
  LinkAddress address;
  PeerID self;
  std::shared_ptr<PeerSession> session;
  const std::shared_ptr<RegisteredKeys> registered = std::make_shared<RegisteredKeys>();

 private:
  TemporaryFolder folder_;

 public:
  std::unique_ptr<WebSocketPeerLink> link;  // goes before what it reports to
  std::unique_ptr<Advertiser> advertiser;
};

}  // namespace torvane::testing
