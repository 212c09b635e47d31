// Events in: connections (accepted, opened, sent, ended), the advertiser's start and stop, answers
// to invitations, messages that sessions want sent. State: one Guest per connection, with its
// stage stranger → waiting → connected → closing.

#include "platform/linux/peer_link_server.h"

#include <algorithm>
#include <utility>

namespace torvane {

PeerLinkServer::PeerLinkServer(boost::asio::io_context& loop, std::shared_ptr<LinkMailbox> mailbox,
                               PeerLinkOptions options)
    : loop_(loop),
      mailbox_(std::move(mailbox)),
      options_(std::move(options)),
      strangers_(options_.caps.strangers),
      failedProofs_(options_.caps.failedProofsPerMinute),
      invitations_(options_.caps.invitations),
      budget_(std::make_shared<ReceiveBudget>(
          options_.caps.received,
          [to = mailbox_] { to->post([](PeerLinkServer& server) { server.readAgain(); }); })),
      ticker_(loop) {}

void PeerLinkServer::startAdvertising(const PeerAdvertisement& advertisement) {
  if (advertisement_ && advertisement_->token == advertisement.token) return;
  if (advertisement_) stopAdvertising(PeerAdvertisement(*advertisement_));
  std::string error;
  if (!listen(error)) return advertisement.delegate->advertiserDidNotStart(error);
  advertisement_ = advertisement;
  port_ = listener_->port();
  const LinkAddress address{listener_->port(), certificate_->hash, advertisement.name};
  runtimeFile_ = std::make_unique<PeerLinkRuntimeFile>(options_.runtimeFolder, address);
  if (options_.didListen) options_.didListen(address);
  if (!options_.isPublished) return;
  publisher_ = std::make_unique<AvahiPublisher>(
      AvahiPublisher::Service{advertisement.name, "_" + advertisement.serviceType + "._tcp",
                              address.port},
      [delegate = advertisement.delegate](std::optional<std::string> problem) {
        if (problem) return delegate->advertiserDidNotStart(std::move(*problem));
        delegate->advertiserDidRecover();
      });
}

bool PeerLinkServer::listen(std::string& error) {
  if (!certificate_) certificate_ = keptCertificate(options_.dataFolder);
  if (certificate_ && !tls_) tls_ = makeLinkTls(certificate_->pem);
  if (!tls_) {
    error = "Other devices cannot connect: the certificate of this computer could not be made.";
    return false;
  }
  listener_ = std::make_unique<PeerLinkListener>(
      loop_, [this](const PeerLinkListener::Accepted& accepted) { didAccept(accepted); });
  if (listener_->open(options_.preferredPort)) return true;
  error = "Other devices cannot connect: no network port is available.";
  return false;
}

void PeerLinkServer::stopAdvertising(const PeerAdvertisement& advertisement) {
  if (!advertisement_ || advertisement_->token != advertisement.token) return;
  publisher_.reset();
  runtimeFile_.reset();
  listener_->close();
  port_ = 0;
  advertisement_.reset();
  for (const auto& connection : connections(Stage::stranger)) connection->drop();
}

void PeerLinkServer::didAccept(const PeerLinkListener::Accepted& accepted) {
  const std::uint64_t token = nextToken();
  const auto connection =
      makePeerConnection({loop_, tls_, *this, budget_, options_.times, options_.caps}, token,
                         accepted.socket, accepted.isIpv6);
  if (!connection) return;
  guests_.emplace(token, Guest{token, connection, accepted.origin});
  if (const auto crowdedOut = strangers_.enter(token, accepted.origin)) drop(*crowdedOut);
  connection->start();
  scheduleTick();
}

void PeerLinkServer::connectionDidOpen(std::uint64_t token, LinkVersion version) {
  Guest* guest = find(token);
  if (guest == nullptr || !advertisement_) return;
  guest->greeting = newGreeting(version);
  send(*guest, helloMessage(advertisement_->name, guest->greeting));
}

void PeerLinkServer::connectionDidSendText(std::uint64_t token, std::string_view text) {
  Guest* guest = find(token);
  if (guest == nullptr || guest->stage != Stage::stranger || !advertisement_) return;
  const auto invitation = readInvitation(text);
  if (const auto* reason = std::get_if<LinkRefusal>(&invitation)) return refuse(*guest, *reason);
  const auto& valid = std::get<PeerInvitation>(invitation);
  if (const auto reason = admit(*guest, valid)) return refuse(*guest, *reason);
  wait(*guest, valid);
}

std::optional<LinkRefusal> PeerLinkServer::admit(Guest& guest, const PeerInvitation& invitation) {
  const double now = secondsOf(LinkClock::now());
  const Inviter inviter =
      makeInviter(invitation.context, guest.origin, *advertisement_->registered);
  if (!inviter.isRegistered && failedProofs_.areTooMany(guest.origin, now)) {
    return LinkRefusal::busy;
  }
  if (!isProven(invitation, guest.greeting, certificate_->hash)) {
    failedProofs_.add(guest.origin, now);
    return LinkRefusal::proof;
  }
  if (!isFull()) guest.waiting = invitations_.letIn(inviter, now);
  return guest.waiting ? std::nullopt : std::optional(LinkRefusal::busy);
}

bool PeerLinkServer::isFull() const {
  const auto hasPlace = [](const auto& entry) {
    const Guest& guest = entry.second;
    return guest.stage == Stage::connected || (guest.waiting && guest.waiting->isRegistered);
  };
  const auto taken = std::count_if(guests_.begin(), guests_.end(), hasPlace);
  return static_cast<std::size_t>(taken) >= options_.caps.connected;
}

void PeerLinkServer::wait(Guest& guest, const PeerInvitation& invitation) {
  strangers_.leave(guest.token);
  guest.stage = Stage::waiting;
  guest.peer = {guest.token, invitation.name};
  guest.connection->setPhase(LinkPhase::nothing);
  send(guest, waitingMessage(guest.greeting));
  advertisement_->delegate->advertiserDidReceiveInvitation(
      {guest.peer, invitation.context, digitsOf(invitation, guest.greeting, certificate_->hash)},
      handlerFor(guest.peer));
}

InvitationHandler PeerLinkServer::handlerFor(const PeerID& peer) const {
  auto isAnswered = std::make_shared<std::atomic<bool>>(false);
  return [mailbox = mailbox_, isAnswered, peer](bool accept,
                                                const std::shared_ptr<PeerSession>& session) {
    if (isAnswered->exchange(true)) return;
    mailbox->post([peer, accept, own = std::dynamic_pointer_cast<LinkSession>(session)](
                      PeerLinkServer& server) { server.answer(peer, accept, own); });
  };
}

void PeerLinkServer::answer(const PeerID& peer, bool accept,
                            const std::shared_ptr<LinkSession>& session) {
  const bool isAccepted = accept && session;
  Guest* guest = find(peer.token);
  if (guest == nullptr || guest->stage != Stage::waiting) {
    // It has gone; who accepted it counts it in by now and must hear that.
    if (isAccepted) session->leave(peer);
    return;
  }
  if (!isAccepted) return refuse(*guest, LinkRefusal::declined);
  guest->waiting.reset();
  guest->stage = Stage::connected;
  guest->session = session;
  guest->connection->setPhase(LinkPhase::frames);
  send(*guest, acceptedMessage());
  session->join(guest->peer, guest->connection->outbox());
}

void PeerLinkServer::connectionDidSendFrame(std::uint64_t token, Bytes frame, MessageLease lease) {
  const Guest* guest = find(token);
  if (guest == nullptr || !guest->session) return;
  guest->session->receive(std::move(frame), {guest->peer, std::move(lease)});
}

void PeerLinkServer::readAgain() {
  for (const auto& connection : connections(Stage::connected)) connection->resume();
}

void PeerLinkServer::connectionIsLeaving(std::uint64_t token) {
  if (Guest* guest = find(token)) leaveStage(*guest);
}

void PeerLinkServer::connectionDidBreakRules(std::uint64_t token) {
  Guest* guest = find(token);
  if (guest == nullptr) return;
  if (guest->stage == Stage::connected) return close(*guest, LinkCloseCode::protocolError);
  refuse(*guest, LinkRefusal::protocol);
}

void PeerLinkServer::refuse(Guest& guest, LinkRefusal reason) {
  send(guest, refusedMessage(reason));
  close(guest,
        reason == LinkRefusal::protocol ? LinkCloseCode::protocolError : LinkCloseCode::policy);
}

// The guest may be gone when this returns.
void PeerLinkServer::close(Guest& guest, LinkCloseCode code) {
  const auto connection = guest.connection;
  leaveStage(guest);
  connection->close(code);
}

void PeerLinkServer::leaveStage(Guest& guest) {
  const Stage left = std::exchange(guest.stage, Stage::closing);
  guest.waiting.reset();
  if (left != Stage::connected) return;
  const auto session = std::exchange(guest.session, nullptr);
  if (isShutDown_) {
    session->abandon();
  } else {
    session->leave(guest.peer);
  }
}

void PeerLinkServer::connectionDidEnd(std::uint64_t token) {
  Guest* guest = find(token);
  if (guest == nullptr) return;
  leaveStage(*guest);
  strangers_.leave(token);
  guests_.erase(token);
}

void PeerLinkServer::disconnect(const LinkSession& session) {
  std::vector<std::uint64_t> members;
  for (const auto& [token, guest] : guests_) {
    if (guest.session.get() == &session) members.push_back(token);
  }
  for (const std::uint64_t token : members) {
    if (Guest* guest = find(token)) close(*guest, LinkCloseCode::goingAway);
  }
}

void PeerLinkServer::flush(std::uint64_t token) {
  if (const Guest* guest = find(token)) guest->connection->flush();
}

void PeerLinkServer::drop(std::uint64_t token) {
  const Guest* guest = find(token);
  if (guest == nullptr) return;
  const auto connection = guest->connection;
  connection->drop();
}

void PeerLinkServer::send(Guest& guest, const std::string& text) {
  guest.connection->outbox()->put({toBytes(text), true});
  guest.connection->flush();
}

void PeerLinkServer::scheduleTick() {
  if (std::exchange(isTicking_, true)) return;
  ticker_.expires_after(tickOf(options_.times));
  ticker_.async_wait([this](const boost::system::error_code& error) {
    isTicking_ = false;
    if (!error && !isShutDown_) tick();
  });
}

void PeerLinkServer::tick() {
  const LinkTime now = LinkClock::now();
  for (const auto& connection : connections({})) connection->tick(now);
  if (!guests_.empty()) scheduleTick();
}

void PeerLinkServer::shutDown() {
  isShutDown_ = true;
  publisher_.reset();
  runtimeFile_.reset();
  if (listener_) listener_->close();
  ticker_.cancel();
  for (const auto& connection : connections({})) connection->drop();
}

PeerLinkServer::Guest* PeerLinkServer::find(std::uint64_t token) {
  const auto guest = guests_.find(token);
  return guest != guests_.end() ? &guest->second : nullptr;
}

std::vector<std::shared_ptr<PeerConnection>> PeerLinkServer::connections(
    std::optional<Stage> stage) const {
  std::vector<std::shared_ptr<PeerConnection>> found;
  for (const auto& [token, guest] : guests_) {
    if (!stage || guest.stage == *stage) found.push_back(guest.connection);
  }
  return found;
}

}  // namespace torvane
