#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <map>
#include <memory>
#include <optional>

#include "peer/failed_proofs.h"
#include "peer/invitation_valve.h"
#include "peer/stranger_places.h"
#include "platform/linux/avahi_publisher.h"
#include "platform/linux/peer_link.h"
#include "platform/linux/peer_link_certificate.h"
#include "platform/linux/peer_link_connection.h"
#include "platform/linux/peer_link_listener.h"
#include "platform/linux/peer_link_runtime_file.h"
#include "platform/linux/peer_link_session.h"
#include "platform/linux/peer_link_tls.h"

namespace torvane {

struct PeerAdvertisement {
  std::uint64_t token;  // of the peer identifier that is advertised
  std::string name;
  std::string serviceType;
  std::shared_ptr<const RegisteredKeys> registered;
  AdvertiserDelegate* delegate;
};

// Who is connected, and what becomes of each connection. Lives on the link's thread; only
// nextToken() and port() may be called from elsewhere.
class PeerLinkServer final : public PeerConnectionOwner {
 public:
  PeerLinkServer(boost::asio::io_context& loop, std::shared_ptr<LinkMailbox> mailbox,
                 PeerLinkOptions options);

  [[nodiscard]] std::uint64_t nextToken() { return nextToken_++; }
  [[nodiscard]] std::uint16_t port() const { return port_; }  // 0 while it does not listen

  void startAdvertising(const PeerAdvertisement& advertisement);
  void stopAdvertising(const PeerAdvertisement& advertisement);
  void answer(const PeerID& peer, bool accept, const std::shared_ptr<LinkSession>& session);
  void flush(std::uint64_t token);
  void drop(std::uint64_t token);
  void disconnect(const LinkSession& session);
  void readAgain();

  // Ends all there is, without a word to any delegate; the loop runs out of work.
  void shutDown();

  void connectionDidOpen(std::uint64_t token, LinkVersion version) override;
  void connectionDidSendText(std::uint64_t token, std::string_view text) override;
  void connectionDidSendFrame(std::uint64_t token, Bytes frame, MessageLease lease) override;
  void connectionIsLeaving(std::uint64_t token) override;
  void connectionDidBreakRules(std::uint64_t token) override;
  void connectionDidEnd(std::uint64_t token) override;

 private:
  enum class Stage { stranger, waiting, connected, closing };

  struct Guest {
    std::uint64_t token;
    std::shared_ptr<PeerConnection> connection;
    std::string origin;
    Stage stage = Stage::stranger;
    LinkGreeting greeting{};
    PeerID peer{};
    InvitationValve::Waiting waiting{};
    std::shared_ptr<LinkSession> session{};
  };

  bool listen(std::string& error);
  void didAccept(const PeerLinkListener::Accepted& accepted);
  std::optional<LinkRefusal> admit(Guest& guest, const PeerInvitation& invitation);
  [[nodiscard]] bool isFull() const;
  void wait(Guest& guest, const PeerInvitation& invitation);
  [[nodiscard]] InvitationHandler handlerFor(const PeerID& peer) const;
  void refuse(Guest& guest, LinkRefusal reason);
  void close(Guest& guest, LinkCloseCode code);
  void leaveStage(Guest& guest);
  void send(Guest& guest, const std::string& text);
  void scheduleTick();
  void tick();
  [[nodiscard]] Guest* find(std::uint64_t token);
  [[nodiscard]] std::vector<std::shared_ptr<PeerConnection>> connections(
      std::optional<Stage> stage) const;

  boost::asio::io_context& loop_;
  const std::shared_ptr<LinkMailbox> mailbox_;
  const PeerLinkOptions options_;
  std::atomic<std::uint64_t> nextToken_{1};
  std::atomic<std::uint16_t> port_{0};
  StrangerPlaces strangers_;  // until they wait or end, also while they are closing
  FailedProofs failedProofs_;
  InvitationValve invitations_;
  const std::shared_ptr<ReceiveBudget> budget_;
  bool isShutDown_ = false;

  std::optional<LinkCertificate> certificate_;
  std::shared_ptr<LinkTls> tls_;
  std::optional<PeerAdvertisement> advertisement_;
  std::unique_ptr<PeerLinkListener> listener_;
  std::unique_ptr<PeerLinkRuntimeFile> runtimeFile_;
  std::unique_ptr<AvahiPublisher> publisher_;
  boost::asio::steady_timer ticker_;
  bool isTicking_ = false;
  std::map<std::uint64_t, Guest> guests_;
};

}  // namespace torvane
