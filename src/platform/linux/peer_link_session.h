#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "ports/peer_session.h"

namespace boost::asio {
class io_context;
}

namespace torvane {

class PeerLinkServer;

// The way onto the link's thread for sessions and invitation handlers, which may outlive it. What
// is posted after close() never runs.
class LinkMailbox {
 public:
  using Work = std::function<void(PeerLinkServer&)>;

  void open(boost::asio::io_context& loop, PeerLinkServer& server);
  void close();
  void post(Work work);  // any thread

 private:
  std::mutex mutex_;
  boost::asio::io_context* loop_ = nullptr;
  PeerLinkServer* server_ = nullptr;
};

struct OutgoingMessage {
  Bytes data;
  bool isText = false;
  MessageLease lease{};  // of what it answers
};

// Messages to one peer that are not sent yet. Any thread puts in; the link's thread takes out.
class PeerOutbox {
 public:
  explicit PeerOutbox(std::size_t limit) : limit_(limit) {}

  // The longest message to be put into one that may hold `limit` bytes: it leaves room for what
  // is on its way already.
  [[nodiscard]] static std::size_t longestMessage(std::size_t limit);

  enum class Put {
    queued,    // the link's thread knows already that there is something to send
    wake,      // it has to be told
    overflow,  // too much is unsent: the peer is to be dropped, told once
    closed,    // the peer has gone
  };
  Put put(OutgoingMessage message);

  // All that is queued, in order; when there is nothing the next put() asks for waking.
  [[nodiscard]] std::deque<OutgoingMessage> takeAll();
  void wasSent(const OutgoingMessage& message);
  void close();

 private:
  std::mutex mutex_;
  std::size_t limit_;
  std::size_t unsent_ = 0;  // bytes queued and bytes taken that are still on their way
  bool isAwake_ = false;
  bool isClosed_ = false;
  std::deque<OutgoingMessage> queue_;
};

// The connections accepted into one session, in the order in which they were connected.
class LinkSession final : public PeerSession, public std::enable_shared_from_this<LinkSession> {
 public:
  LinkSession(std::shared_ptr<LinkMailbox> mailbox, PeerSessionDelegate& delegate,
              std::size_t longestMessage)
      : mailbox_(std::move(mailbox)), delegate_(delegate), longestMessage_(longestMessage) {}

  [[nodiscard]] std::vector<PeerID> connectedPeers() const override;
  [[nodiscard]] std::size_t longestMessage() const override { return longestMessage_; }
  void sendReliably(Bytes message, const Asker& to) override;
  void disconnect() override;

  // Called on the link's thread; each tells the delegate.
  void join(const PeerID& peer, std::shared_ptr<PeerOutbox> outbox);
  void leave(const PeerID& peer);
  void receive(Bytes data, Asker from);

  // Forgets the peers without a word, as the link goes.
  void abandon();

 private:
  struct Member {
    PeerID peer;
    std::shared_ptr<PeerOutbox> outbox;
  };

  std::shared_ptr<LinkMailbox> mailbox_;
  PeerSessionDelegate& delegate_;
  const std::size_t longestMessage_;
  mutable std::mutex mutex_;
  std::vector<Member> members_;
};

}  // namespace torvane
