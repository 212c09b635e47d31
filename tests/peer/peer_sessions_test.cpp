#include "app/status_icon.h"
#include "fakes/helper_test.h"
#include "protocol/p2p_frame.h"
#include "support/signing_device.h"

namespace torvane {
namespace {

// Two paired iPads.
class Session : public HelperTest {
 protected:
  const test::SigningDevice firstDevice{1};
  const test::SigningDevice secondDevice{2};
  PeerID first;
  PeerID second;

  void SetUp() override {
    remember({{firstDevice.deviceKey(), "First"}, {secondDevice.deviceKey(), "Second"}});
    launch();
    first = platform.peerLink.newPeer("First");
    second = platform.peerLink.newPeer("Second");
  }
  void accept(const PeerID& peer, const test::SigningDevice& device) {
    platform.peerLink.invite(peer, device.rawKey());
    platform.time.runDue();
  }
  void admit(const PeerID& peer, const test::SigningDevice& device) {
    accept(peer, device);
    connect(peer);
  }
  void receive(const PeerID& peer, Bytes message) {
    platform.peerLink.current().receive(peer, std::move(message));
    platform.time.runDue();
  }
  std::string challengeOf(const PeerID& peer) {
    receive(peer, test::challengeRequest(1000));
    const auto reply = P2PFrame::decode(platform.peerLink.current().sentTo(peer).back()).value();
    return stringMember(parseJsonObject(asText(reply.body)).value(), "challenge").value();
  }
  std::size_t replies(const PeerID& peer) {
    return platform.peerLink.current().sentTo(peer).size();
  }
};

TEST_F(Session, ListsConnectedPeersInTheSessionsOrder) {
  connect(second);
  connect(first);
  EXPECT_EQ(connectedNames(), (std::vector<std::string>{"Second", "First"}));
  EXPECT_EQ(platform.statusBar.shown.icons.back(), statusIcon({"Second", "First"}, false));
}

TEST_F(Session, ConnectingRefreshesTheListAndTheIcon) {
  platform.peerLink.current().connected = {first};  // and no event has told of it yet
  platform.peerLink.current().changeState(second, PeerState::connecting);
  platform.time.runDue();
  EXPECT_EQ(connectedNames(), std::vector<std::string>{"First"});
  EXPECT_EQ(platform.statusBar.shown.icons.back(), statusIcon({"First"}, false));
}

TEST_F(Session, DisconnectingOneOfTwoClearsOnlyItsState) {
  admit(first, firstDevice);
  admit(second, secondDevice);
  const std::string challenge = challengeOf(second);
  const Bytes request = secondDevice.envelope(challenge, {{"id", 1}, {"path", "/p2p/bridge-info"}});
  receive(second, request);
  const std::size_t answered = replies(second);
  disconnect(first);
  EXPECT_FALSE(serves(first));
  receive(second, request);
  EXPECT_EQ(replies(second), answered) << "a replay";
  EXPECT_EQ(challengeOf(second), challenge);
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

TEST_F(Session, DisconnectingAPeerWithoutAChallengeTouchesNoOther) {
  admit(first, firstDevice);
  const std::string challenge = challengeOf(first);
  admit(second, secondDevice);
  disconnect(second);
  EXPECT_FALSE(serves(second));
  EXPECT_EQ(challengeOf(first), challenge);
}

TEST_F(Session, IsReplacedWhenTheLastPeerHasGone) {
  admit(first, firstDevice);
  disconnect(first);
  ASSERT_EQ(platform.peerLink.sessions.size(), 2U);
  const auto answers = platform.peerLink.invite(second, secondDevice.rawKey());
  platform.time.runDue();
  EXPECT_EQ(answers->at(0).session, platform.peerLink.sessions.back());
  EXPECT_TRUE(connectedNames().empty());
}

TEST_F(Session, IsReplacedWhenTheOnlyInviterHasGoneBeforeItsAnswer) {
  accept(first, firstDevice);
  platform.peerLink.current().changeState(first, PeerState::notConnected);
  platform.time.runDue();
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_FALSE(serves(first));
}

TEST_F(Session, ReplacedSessionIsReleasedAndNotDisconnected) {
  admit(first, firstDevice);
  disconnect(first);
  ASSERT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(platform.peerLink.sessions.front().use_count(), 1);  // nobody's but the link's
  EXPECT_GT(platform.peerLink.sessions.back().use_count(), 1);
  EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "disconnect"), 0);
}

TEST_F(Session, IsKeptWhileAKeyIsHeldEvenWithNobodyConnected) {
  accept(second, secondDevice);  // and it is still connecting
  admit(first, firstDevice);
  disconnect(first);
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

TEST_F(Session, IsKeptWhileAnyoneIsConnectedEvenWithoutKeys) {
  connect(first);
  connect(second);
  disconnect(first);
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

TEST_F(Session, ReplacedSessionsEventsChangeNothing) {
  admit(first, firstDevice);
  disconnect(first);
  const auto icons = platform.statusBar.shown.icons.size();
  platform.peerLink.sessions.front()->changeState(second, PeerState::connected);
  platform.time.runDue();
  EXPECT_TRUE(connectedNames().empty());
  EXPECT_EQ(platform.statusBar.shown.icons.size(), icons);
}

TEST_F(Session, ReplacedSessionsDisconnectLeavesTheRegistryAlone) {
  admit(first, firstDevice);
  disconnect(first);
  admit(second, secondDevice);
  platform.peerLink.sessions.front()->changeState(second, PeerState::notConnected);
  platform.time.runDue();
  EXPECT_TRUE(serves(second));
}

TEST_F(Session, AdvertisingErrorStaysThroughALaterConnection) {
  platform.peerLink.failAdvertising("Bonjour is off");
  platform.time.runDue();
  connect(first);
  EXPECT_EQ(helper->menuNeedsUpdate()[0].title, "Not advertising: Bonjour is off");
}

TEST_F(Session, AnAdvertisingErrorGoesWhenTheLinkSaysThatItHasPassed) {
  platform.peerLink.failAdvertising("Discovery is off");
  platform.time.runDue();
  connect(first);
  EXPECT_EQ(helper->menuNeedsUpdate()[0].title, "Not advertising: Discovery is off");
  const auto icons = platform.statusBar.shown.icons.size();
  platform.peerLink.recoverAdvertising();
  platform.time.runDue();
  EXPECT_EQ(helper->menuNeedsUpdate()[0].title, "Connected:");
  EXPECT_EQ(platform.statusBar.shown.icons.size(), icons + 1);
  platform.peerLink.failAdvertising("Discovery is off again");
  platform.time.runDue();
  EXPECT_EQ(helper->menuNeedsUpdate()[0].title, "Not advertising: Discovery is off again");
}

}  // namespace
}  // namespace torvane
