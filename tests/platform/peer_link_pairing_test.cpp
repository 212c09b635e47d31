#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "protocol/json.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

TEST(PeerLinkPairing, AcceptedInvitationIsConnectingThenConnected) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  const auto key = DeviceKeyPair::numbered(1);
  ASSERT_EQ(client.invite("Ada's iPad", key), "waiting");

  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  EXPECT_EQ(invited->peer.displayName, "Ada's iPad");
  EXPECT_EQ(invited->context, key.publicKey());
  invited->handler(true, host.session);

  EXPECT_EQ(client.outcome(), "accepted");
  const auto connecting = host.changes.next();
  const auto connected = host.changes.next();
  ASSERT_TRUE(connecting && connected);
  EXPECT_EQ(connecting->state, PeerState::connecting);
  EXPECT_TRUE(connecting->connectedPeers.empty());
  EXPECT_EQ(connected->state, PeerState::connected);
  EXPECT_EQ(connected->session, host.session);
  EXPECT_EQ(connected->connectedPeers, std::vector<PeerID>{invited->peer});
}

TEST(PeerLinkPairing, FramesTravelBothWaysInOrder) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(host.admit(client, "iPad", DeviceKeyPair::numbered(1)));
  const PeerID peer = host.session->connectedPeers().at(0);

  for (std::uint8_t i = 0; i < 100; ++i) ASSERT_TRUE(client.sendBinary(Bytes(i * 50U, i)));
  for (std::uint8_t i = 0; i < 100; ++i) {
    const auto received = host.received.next();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->data, Bytes(i * 50U, i));
    EXPECT_EQ(received->peer, peer);
    host.session->sendReliably(received->data, peer);
  }
  for (std::uint8_t i = 0; i < 100; ++i) {
    const auto message = client.receive();
    ASSERT_TRUE(message);
    EXPECT_FALSE(message->isText);
    EXPECT_EQ(message->data, Bytes(i * 50U, i));
  }
}

}  // namespace
}  // namespace torvane
