#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_desktop.h"
#include "fakes/simulated_time.h"
#include "ports/peer_session.h"

namespace torvane {

struct SentMessage {
  PeerID peer;
  Bytes message;
};

class FakePeerSession final : public PeerSession,
                              public std::enable_shared_from_this<FakePeerSession> {
 public:
  FakePeerSession(PeerSessionDelegate& delegate, SimulatedTime& time, CallLog& log)
      : delegate_(delegate), time_(time), log_(log) {}

  std::vector<PeerID> connected;
  std::vector<SentMessage> sent;
  std::size_t longest = std::size_t{64} << 20;  // message that can be sent

  void changeState(const PeerID& peer, PeerState state) {
    connected.erase(std::remove(connected.begin(), connected.end(), peer), connected.end());
    if (state == PeerState::connected) connected.push_back(peer);
    offMain(
        [this, peer, state] { delegate_.sessionPeerDidChange(shared_from_this(), peer, state); });
  }
  void receive(const PeerID& peer, Bytes data, MessageLease lease = {}) {
    offMain([this, peer, data = std::move(data), lease = std::move(lease)] {
      delegate_.sessionDidReceive(shared_from_this(), data, {peer, lease});
    });
  }
  // What was sent to one peer, oldest first.
  [[nodiscard]] std::vector<Bytes> sentTo(const PeerID& peer) const {
    std::vector<Bytes> messages;
    for (const auto& entry : sent) {
      if (entry.peer == peer) messages.push_back(entry.message);
    }
    return messages;
  }

  [[nodiscard]] std::vector<PeerID> connectedPeers() const override { return connected; }
  [[nodiscard]] std::size_t longestMessage() const override { return longest; }
  void sendReliably(Bytes message, const Asker& to) override {
    sent.push_back({to.peer, std::move(message)});
  }
  void disconnect() override { log_.push_back("disconnect"); }

 private:
  void offMain(std::function<void()> work) { time_.scheduleBackground(0, std::move(work)); }

  PeerSessionDelegate& delegate_;
  SimulatedTime& time_;
  CallLog& log_;
};

// How one invitation was answered.
struct InvitationAnswer {
  bool accept = false;
  std::shared_ptr<PeerSession> session;
};

class FakePeerLink final : public PeerLink {
 public:
  FakePeerLink(SimulatedTime& time, CallLog& log) : time_(time), log_(log) {}

  std::string ownName;
  std::vector<std::shared_ptr<FakePeerSession>> sessions;  // every session made, oldest first
  std::string advertisedType;
  std::shared_ptr<const RegisteredKeys> registered;  // as the advertiser got them
  AdvertiserDelegate* advertiserDelegate = nullptr;
  std::vector<std::string> ownAddresses;

  [[nodiscard]] FakePeerSession& current() { return *sessions.back(); }

  // An invitation arrives off the main thread; the answers it gets are kept in order.
  std::shared_ptr<std::vector<InvitationAnswer>> invite(
      const PeerID& peer, std::optional<Bytes> context,
      std::optional<std::string> digits = std::nullopt) {
    auto answers = std::make_shared<std::vector<InvitationAnswer>>();
    deliver({peer, std::move(context), std::move(digits)},
            [answers](bool accept, std::shared_ptr<PeerSession> session) {
              answers->push_back({accept, std::move(session)});
            });
    return answers;
  }
  // The same; `whenAnswered` runs within the answer.
  void inviteAndRun(const PeerID& peer, Bytes context, std::function<void(bool)> whenAnswered) {
    deliver({peer, std::move(context)}, [whenAnswered = std::move(whenAnswered)](
                                            bool accept, const auto&) { whenAnswered(accept); });
  }
  void failAdvertising(const std::string& error) {
    time_.scheduleBackground(0,
                             [this, error] { advertiserDelegate->advertiserDidNotStart(error); });
  }

  void recoverAdvertising() {
    time_.scheduleBackground(0, [this] { advertiserDelegate->advertiserDidRecover(); });
  }

  [[nodiscard]] PeerID makePeerID(const std::string& displayName) override {
    ownName = displayName;
    return {nextToken_++, displayName};
  }
  [[nodiscard]] PeerID newPeer(const std::string& displayName) {
    return {nextToken_++, displayName};
  }
  [[nodiscard]] std::shared_ptr<PeerSession> makeSession(const PeerID&,
                                                         PeerSessionDelegate& delegate) override {
    log_.push_back("make session");
    sessions.push_back(std::make_shared<FakePeerSession>(delegate, time_, log_));
    return sessions.back();
  }
  [[nodiscard]] std::unique_ptr<Advertiser> makeAdvertiser(
      const PeerID&, const std::string& serviceType, std::shared_ptr<const RegisteredKeys> keys,
      AdvertiserDelegate& delegate) override {
    log_.push_back("make advertiser");
    advertisedType = serviceType;
    registered = std::move(keys);
    advertiserDelegate = &delegate;
    return std::make_unique<FakeAdvertiser>(log_);
  }

  [[nodiscard]] std::vector<std::string> addresses() const override { return ownAddresses; }

 private:
  class FakeAdvertiser final : public Advertiser {
   public:
    explicit FakeAdvertiser(CallLog& log) : log_(log) {}
    void start() override { log_.push_back("start advertising"); }
    void stop() override { log_.push_back("stop advertising"); }

   private:
    CallLog& log_;
  };

  void deliver(Invitation invitation, InvitationHandler handler) {
    time_.scheduleBackground(
        0, [this, invitation = std::move(invitation), handler = std::move(handler)] {
          advertiserDelegate->advertiserDidReceiveInvitation(invitation, handler);
        });
  }

  SimulatedTime& time_;
  CallLog& log_;
  std::uint64_t nextToken_ = 1;
};

}  // namespace torvane
