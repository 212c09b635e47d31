#include <gtest/gtest.h>

#include <thread>

#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

class PeerLinkSession : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(host.start(), 0); }

  std::unique_ptr<LinkClient> connected(std::uint8_t number) {
    auto client = std::make_unique<LinkClient>(host.clientOptions());
    EXPECT_TRUE(
        host.admit(*client, "iPad " + std::to_string(number), DeviceKeyPair::numbered(number)));
    return client;
  }

  LinkHost host;
};

TEST_F(PeerLinkSession, FramesTravelBothWaysInOrder) {
  const auto client = connected(1);
  const PeerID peer = host.session->connectedPeers().at(0);
  for (std::uint8_t i = 0; i < 100; ++i) ASSERT_TRUE(client->sendBinary(Bytes(i * 50U, i)));
  for (std::uint8_t i = 0; i < 100; ++i) {
    const auto received = host.received.next();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->data, Bytes(i * 50U, i));
    EXPECT_EQ(received->peer, peer);
    host.session->sendReliably(received->data, {peer});
  }
  for (std::uint8_t i = 0; i < 100; ++i) {
    const auto message = client->receive();
    ASSERT_TRUE(message);
    EXPECT_FALSE(message->isText);
    EXPECT_EQ(message->data, Bytes(i * 50U, i));
  }
}

TEST_F(PeerLinkSession, MessagesOfManyThreadsKeepEachThreadsOrder) {
  const auto client = connected(1);
  const PeerID peer = host.session->connectedPeers().at(0);
  std::vector<std::thread> senders;
  for (std::uint8_t sender = 0; sender < 3; ++sender) {
    senders.emplace_back([this, sender, &peer] {
      for (std::uint8_t i = 0; i < 100; ++i) host.session->sendReliably({sender, i}, {peer});
    });
  }
  std::vector<int> next(3);
  for (int i = 0; i < 300; ++i) {
    const auto message = client->receive();
    ASSERT_TRUE(message && message->data.size() == 2);
    EXPECT_EQ(message->data[1], next.at(message->data[0])++);
  }
  for (auto& sender : senders) sender.join();
}

TEST_F(PeerLinkSession, CarriesTheLargestMessage) {
  const auto client = connected(1);
  const Bytes largest(std::size_t{16} << 20, 7);
  ASSERT_TRUE(client->sendBinary(largest));
  auto received = host.received.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->data, largest);
  host.session->sendReliably(std::move(received->data), {received->peer});
  const auto back = client->receive();
  ASSERT_TRUE(back);
  EXPECT_EQ(back->data, largest);
}

TEST_F(PeerLinkSession, ListsPeersInTheOrderOfTheirConnections) {
  const auto first = connected(1);
  const auto second = connected(2);
  const auto third = connected(3);
  second->close();
  const auto left = host.changes.next();
  ASSERT_TRUE(left);
  EXPECT_EQ(left->state, PeerState::notConnected);
  EXPECT_EQ(left->peer.displayName, "iPad 2");
  ASSERT_EQ(left->connectedPeers.size(), 2U);
  EXPECT_EQ(left->connectedPeers[0].displayName, "iPad 1");
  EXPECT_EQ(left->connectedPeers[1].displayName, "iPad 3");
}

TEST_F(PeerLinkSession, SendsToTheNamedPeerAlone) {
  const auto first = connected(1);
  const auto second = connected(2);
  const auto peers = host.session->connectedPeers();
  host.session->sendReliably({2}, {peers.at(1)});
  host.session->sendReliably({1}, {peers.at(0)});
  EXPECT_EQ(first->receive()->data, Bytes{1});
  EXPECT_EQ(second->receive()->data, Bytes{2});
}

TEST_F(PeerLinkSession, AReconnectionIsAnotherPeer) {
  auto client = connected(1);
  const PeerID before = host.session->connectedPeers().at(0);
  client->vanish();
  ASSERT_TRUE(host.changes.next());
  client = connected(1);
  const PeerID after = host.session->connectedPeers().at(0);
  EXPECT_NE(before, after);
  EXPECT_LT(before, after);
  host.session->sendReliably({1}, {before});  // goes nowhere
  host.session->sendReliably({2}, {after});
  EXPECT_EQ(client->receive()->data, Bytes{2});
}

TEST_F(PeerLinkSession, EventsCarryTheSessionThatTheInvitationWasAcceptedInto) {
  const auto first = connected(1);
  auto old = host.session;
  host.session = host.link->makeSession(host.self, host);
  const auto second = connected(2);
  EXPECT_EQ(old->connectedPeers().size(), 1U);
  EXPECT_EQ(host.session->connectedPeers().size(), 1U);
  const PeerSession* expected = old.get();
  old.reset();  // released while its peer is connected

  ASSERT_TRUE(first->sendBinary(Bytes{1}));
  const auto received = host.received.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->session.get(), expected);
  first->vanish();
  const auto left = host.changes.next();
  ASSERT_TRUE(left);
  EXPECT_EQ(left->session.get(), expected);
  EXPECT_TRUE(left->connectedPeers.empty());
}

TEST_F(PeerLinkSession, DisconnectClosesEveryConnectionOfItsOwn) {
  const auto first = connected(1);
  const auto second = connected(2);
  const auto old = host.session;
  host.session = host.link->makeSession(host.self, host);
  const auto other = connected(3);
  old->disconnect();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(host.changes.next()->state, PeerState::notConnected);
  EXPECT_TRUE(old->connectedPeers().empty());
  for (const auto* client : {&first, &second}) {
    EXPECT_FALSE((*client)->receive());
    EXPECT_EQ((*client)->closeCode(), 1001U);
  }
  host.session->sendReliably({3}, {host.session->connectedPeers().at(0)});
  EXPECT_EQ(other->receive()->data, Bytes{3});
}

TEST_F(PeerLinkSession, DisconnectSendsWhatWasQueuedBefore) {
  const auto client = connected(1);
  host.session->sendReliably({1}, {host.session->connectedPeers().at(0)});
  host.session->disconnect();
  const auto message = client->receive();
  ASSERT_TRUE(message);
  EXPECT_EQ(message->data, Bytes{1});
}

TEST_F(PeerLinkSession, RefusalAfterTheInviterHasGoneDoesNothing) {
  auto client = std::make_unique<LinkClient>(host.clientOptions());
  ASSERT_EQ(client->invite("iPad", DeviceKeyPair::numbered(1)), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  client->close();  // comes back when the server has answered it
  invited->handler(false, nullptr);
  const auto next = connected(2);  // its events are the only ones
  ASSERT_EQ(host.session->connectedPeers().size(), 1U);
  EXPECT_EQ(host.session->connectedPeers()[0].displayName, "iPad 2");
  EXPECT_TRUE(host.changes.empty());
}

TEST_F(PeerLinkSession, NothingHappensAfterTheLinkHasGone) {
  const auto client = connected(1);
  LinkClient waiting(host.clientOptions());
  ASSERT_EQ(waiting.invite("iPad", DeviceKeyPair::numbered(2)), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  const PeerID peer = host.session->connectedPeers().at(0);
  host.link.reset();

  invited->handler(true, host.session);
  host.session->sendReliably({1}, {peer});
  host.session->disconnect();
  host.advertiser->stop();
  EXPECT_TRUE(host.session->connectedPeers().empty());
  EXPECT_TRUE(host.changes.empty());
  EXPECT_TRUE(client->waitForEnd());
}

TEST_F(PeerLinkSession, StopKeepsConnectionsAndTakesNoNewOnes) {
  const auto client = connected(1);
  LinkClient stranger(host.clientOptions());
  ASSERT_TRUE(stranger.connect() && stranger.receiveHello());
  host.advertiser->stop();
  EXPECT_TRUE(stranger.waitForEnd());
  LinkClient late(host.clientOptions());
  EXPECT_FALSE(late.connectTcp());
  host.session->sendReliably({1}, {host.session->connectedPeers().at(0)});
  EXPECT_EQ(client->receive()->data, Bytes{1});
}

TEST_F(PeerLinkSession, StartsAgainAfterStop) {
  const auto certificate = host.address.certificate;
  host.advertiser->stop();
  ASSERT_NE(host.start(), 0);
  EXPECT_EQ(host.address.certificate, certificate);
  EXPECT_NE(connected(1), nullptr);
}

TEST_F(PeerLinkSession, WaitingInvitationSurvivesStop) {
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", DeviceKeyPair::numbered(1)), "waiting");
  host.advertiser->stop();
  ASSERT_TRUE(host.answerNext(true));
  EXPECT_EQ(client.outcome(), "accepted");
}

}  // namespace
}  // namespace torvane
