#include "app/status_icon.h"
#include "fakes/helper_test.h"

namespace torvane {
namespace {

// Two paired iPads with state of their own.
class Session : public HelperTest {
 protected:
  PeerID first;
  PeerID second;

  void SetUp() override {
    launch();
    first = platform.peerLink.newPeer("First");
    second = platform.peerLink.newPeer("Second");
  }
  void admit(const PeerID& peer, std::uint8_t seed) {
    helper->admitPeer(peer, deviceKey(seed));
    helper->challenges[peer] = "challenge";
    helper->receivedIDs[peer].insert(1);
    connect(peer);
  }
};

TEST_F(Session, ListsConnectedPeersInTheSessionsOrder) {
  connect(second);
  connect(first);
  EXPECT_EQ(helper->connectedPeers, (std::vector<std::string>{"Second", "First"}));
  EXPECT_EQ(platform.statusBar.shown.icons.back(), statusIcon({"Second", "First"}, false));
}

TEST_F(Session, ConnectingRefreshesTheListAndTheIcon) {
  platform.peerLink.current().connected = {first};  // and no event has told of it yet
  platform.peerLink.current().changeState(second, PeerState::connecting);
  platform.time.runDue();
  EXPECT_EQ(helper->connectedPeers, std::vector<std::string>{"First"});
  EXPECT_EQ(platform.statusBar.shown.icons.back(), statusIcon({"First"}, false));
}

TEST_F(Session, DisconnectingOneOfTwoClearsOnlyItsState) {
  admit(first, 1);
  admit(second, 2);
  disconnect(first);
  EXPECT_EQ(helper->peerKeys.count(first) + helper->challenges.count(first) +
                helper->receivedIDs.count(first),
            0U);
  EXPECT_EQ(helper->peerKeys.at(second), deviceKey(2));
  EXPECT_EQ(helper->challenges.at(second), "challenge");
  EXPECT_TRUE(helper->receivedIDs.at(second).contains(1));
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

TEST_F(Session, DisconnectingAPeerWithoutAChallengeTouchesNoOther) {
  admit(first, 1);
  helper->admitPeer(second, deviceKey(2));
  connect(second);
  disconnect(second);
  EXPECT_EQ(helper->peerKeys, (std::map<PeerID, std::string>{{first, deviceKey(1)}}));
  EXPECT_EQ(helper->challenges, (std::map<PeerID, std::string>{{first, "challenge"}}));
  ASSERT_EQ(helper->receivedIDs.size(), 1U);
  EXPECT_TRUE(helper->receivedIDs.at(first).contains(1));
}

TEST_F(Session, IsReplacedWhenTheLastPeerHasGone) {
  admit(first, 1);
  disconnect(first);
  ASSERT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(helper->session, platform.peerLink.sessions.back());
  EXPECT_TRUE(helper->connectedPeers.empty());
}

TEST_F(Session, IsReplacedWhenTheOnlyInviterHasGoneBeforeItsAnswer) {
  const auto answers = invite(first, 1);
  ASSERT_TRUE(answers->at(0).accept);
  platform.peerLink.current().changeState(first, PeerState::notConnected);
  platform.time.runDue();
  EXPECT_TRUE(helper->peerKeys.empty());
  EXPECT_EQ(platform.peerLink.sessions.size(), 2U);
}

TEST_F(Session, ReplacedSessionIsReleasedAndNotDisconnected) {
  admit(first, 1);
  disconnect(first);
  ASSERT_EQ(platform.peerLink.sessions.size(), 2U);
  EXPECT_EQ(platform.peerLink.sessions.front().use_count(), 1);  // nobody's but the link's
  EXPECT_GT(platform.peerLink.sessions.back().use_count(), 1);
  EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "disconnect"), 0);
}

TEST_F(Session, IsKeptWhileAKeyIsHeldEvenWithNobodyConnected) {
  helper->admitPeer(second, deviceKey(2));  // accepted, still connecting
  admit(first, 1);
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
  admit(first, 1);
  disconnect(first);
  const auto icons = platform.statusBar.shown.icons.size();
  platform.peerLink.sessions.front()->changeState(second, PeerState::connected);
  platform.time.runDue();
  EXPECT_TRUE(helper->connectedPeers.empty());
  EXPECT_EQ(platform.statusBar.shown.icons.size(), icons);
}

TEST_F(Session, ReplacedSessionsDisconnectLeavesTheRegistryAlone) {
  admit(first, 1);
  disconnect(first);
  admit(second, 2);
  platform.peerLink.sessions.front()->changeState(second, PeerState::notConnected);
  platform.time.runDue();
  EXPECT_EQ(helper->peerKeys.count(second), 1U);
}

TEST_F(Session, AdvertisingErrorStaysThroughALaterConnection) {
  platform.peerLink.failAdvertising("Bonjour is off");
  platform.time.runDue();
  connect(first);
  EXPECT_EQ(helper->advertiseError, "Bonjour is off");
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
