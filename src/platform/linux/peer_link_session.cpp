#include "platform/linux/peer_link_session.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include "platform/linux/peer_link_server.h"

namespace torvane {
namespace {

// What a queued message takes beside its bytes, so that empty ones cannot pile up for nothing.
constexpr std::size_t kQueuedOverhead = 64;

std::size_t costOf(const OutgoingMessage& message) {
  return message.data.size() + kQueuedOverhead;
}

}  // namespace

void LinkMailbox::open(boost::asio::io_context& loop, PeerLinkServer& server) {
  const std::lock_guard lock(mutex_);
  loop_ = &loop;
  server_ = &server;
}

void LinkMailbox::close() {
  const std::lock_guard lock(mutex_);
  loop_ = nullptr;
}

void LinkMailbox::post(Work work) {
  const std::lock_guard lock(mutex_);
  if (loop_ == nullptr) return;
  boost::asio::post(*loop_, [work = std::move(work), server = server_] { work(*server); });
}

std::size_t PeerOutbox::longestMessage(std::size_t limit) {
  return limit - limit / 64;
}

PeerOutbox::Put PeerOutbox::put(OutgoingMessage message) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return Put::closed;
  unsent_ += costOf(message);
  if (unsent_ > limit_) {
    isClosed_ = true;
    queue_.clear();
    return Put::overflow;
  }
  queue_.push_back(std::move(message));
  return std::exchange(isAwake_, true) ? Put::queued : Put::wake;
}

std::deque<OutgoingMessage> PeerOutbox::takeAll() {
  const std::lock_guard lock(mutex_);
  if (queue_.empty()) isAwake_ = false;
  return std::exchange(queue_, {});
}

void PeerOutbox::wasSent(const OutgoingMessage& message) {
  const std::lock_guard lock(mutex_);
  unsent_ -= costOf(message);
}

void PeerOutbox::close() {
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  queue_.clear();
}

std::vector<PeerID> LinkSession::connectedPeers() const {
  const std::lock_guard lock(mutex_);
  std::vector<PeerID> peers;
  peers.reserve(members_.size());
  for (const auto& member : members_) peers.push_back(member.peer);
  return peers;
}

void LinkSession::sendReliably(Bytes message, const Asker& to) {
  std::shared_ptr<PeerOutbox> outbox;
  {
    const std::lock_guard lock(mutex_);
    const auto member = std::find_if(members_.begin(), members_.end(),
                                     [&to](const Member& m) { return m.peer == to.peer; });
    if (member == members_.end()) return;
    outbox = member->outbox;
  }
  const auto put = outbox->put({std::move(message), false, to.lease});
  const auto token = to.peer.token;
  if (put == PeerOutbox::Put::wake) {
    mailbox_->post([token](PeerLinkServer& server) { server.flush(token); });
  } else if (put == PeerOutbox::Put::overflow) {
    mailbox_->post([token](PeerLinkServer& server) { server.drop(token); });
  }
}

void LinkSession::disconnect() {
  mailbox_->post([self = shared_from_this()](PeerLinkServer& server) { server.disconnect(*self); });
}

void LinkSession::join(const PeerID& peer, std::shared_ptr<PeerOutbox> outbox) {
  delegate_.sessionPeerDidChange(shared_from_this(), peer, PeerState::connecting);
  {
    const std::lock_guard lock(mutex_);
    members_.push_back({peer, std::move(outbox)});
  }
  delegate_.sessionPeerDidChange(shared_from_this(), peer, PeerState::connected);
}

void LinkSession::leave(const PeerID& peer) {
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(members_, [&peer](const Member& m) { return m.peer == peer; });
  }
  delegate_.sessionPeerDidChange(shared_from_this(), peer, PeerState::notConnected);
}

void LinkSession::receive(Bytes data, Asker from) {
  delegate_.sessionDidReceive(shared_from_this(), std::move(data), std::move(from));
}

void LinkSession::abandon() {
  const std::lock_guard lock(mutex_);
  members_.clear();
}

}  // namespace torvane
