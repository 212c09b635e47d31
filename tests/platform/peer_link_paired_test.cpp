// A paired device gets in, whatever strangers do at the same time.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "protocol/base64.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

// Waits for whoever says nothing, as the clients of these tests answer no pings.
PeerLinkOptions patient() {
  PeerLinkOptions options;
  options.times.handshake = options.times.ping = options.times.dead = std::chrono::minutes(5);
  return options;
}

class PeerLinkPaired : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(host.start(), 0);
    host.registered->insert(base64Encode(paired.publicKey()));
  }

  // A client on the loopback address 127.0.0.`last`.
  [[nodiscard]] std::unique_ptr<LinkClient> clientAt(int last) const {
    auto options = host.clientOptions();
    options.from = "127.0.0." + std::to_string(last);
    return std::make_unique<LinkClient>(options);
  }

  static PeerLinkOptions manyInvitations() {
    PeerLinkOptions options = patient();
    options.caps.invitations.perMinute = options.caps.invitations.perMinuteOfOrigin = 10'000;
    return options;
  }

  const DeviceKeyPair paired = DeviceKeyPair::numbered(1);
  LinkHost host{manyInvitations()};
};

TEST(PeerLinkStrangers, OneThatInvitesOnAndOnKeepsNoPairedDeviceOut) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  const auto paired = DeviceKeyPair::numbered(1);
  host.registered->insert(base64Encode(paired.publicKey()));
  int declined = 0;
  for (int i = 0; i < 40; ++i) {
    LinkClient ignored(host.clientOptions());
    if (ignored.invite("Eve", DeviceKeyPair::numbered(2)) != "waiting") continue;
    ASSERT_TRUE(host.answerNext(false));
    declined += ignored.outcome() == "declined" ? 1 : 0;
  }
  EXPECT_EQ(declined, 6);
  LinkClient stranger(host.clientOptions());
  EXPECT_EQ(stranger.invite("Zoe", DeviceKeyPair::numbered(3)), "waiting");
  LinkClient client(host.clientOptions());
  EXPECT_EQ(client.invite("Ada's iPad", paired), "waiting");
}

TEST(PeerLinkStrangers, SixtyFourPairedDevicesGetInWithinTheFirstMinute) {
  LinkHost host(patient());
  ASSERT_NE(host.start(), 0);
  int accepted = 0;
  std::vector<std::unique_ptr<LinkClient>> clients;
  for (std::uint8_t i = 0; i < 64; ++i) {
    const auto key = DeviceKeyPair::numbered(i);
    host.registered->insert(base64Encode(key.publicKey()));
    clients.push_back(std::make_unique<LinkClient>(host.clientOptions()));
    accepted += host.admit(*clients.back(), "iPad", key) ? 1 : 0;
  }
  EXPECT_EQ(accepted, 64);
  EXPECT_EQ(host.session->connectedPeers().size(), 64U);
}

TEST(PeerLinkStrangers, NobodyComesInWhileAllPlacesAreTaken) {
  PeerLinkOptions options = patient();
  options.caps.connected = 2;
  LinkHost host(std::move(options));
  ASSERT_NE(host.start(), 0);
  for (std::uint8_t i = 1; i <= 3; ++i) {
    host.registered->insert(base64Encode(DeviceKeyPair::numbered(i).publicKey()));
  }
  LinkClient connected(host.clientOptions());
  ASSERT_TRUE(host.admit(connected, "iPad", DeviceKeyPair::numbered(1)));
  LinkClient waiting(host.clientOptions());
  ASSERT_EQ(waiting.invite("iPad", DeviceKeyPair::numbered(2)), "waiting");
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("iPad", DeviceKeyPair::numbered(3)), "busy");
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("Eve", DeviceKeyPair::numbered(4)), "busy");
  connected.close();
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("iPad", DeviceKeyPair::numbered(3)), "waiting");
}

TEST(PeerLinkStrangers, InvitationsWithoutAKeyAreCountedMoreTightly) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  int letIn = 0;
  for (int i = 0; i < 30; ++i) {
    auto options = host.clientOptions();
    options.from = "127.0.0." + std::to_string(2 + i % 10);
    LinkClient client(options);
    ASSERT_TRUE(client.connect() && client.receiveHello());
    ASSERT_TRUE(client.sendText(R"({"type":"invite","name":"Relic )" + std::to_string(i) + "\"}"));
    letIn += client.outcome() == "waiting" ? 1 : 0;
  }
  EXPECT_EQ(letIn, 6);
}

TEST(PeerLinkStrangers, AForgottenDeviceIsAStrangerAgain) {
  PeerLinkOptions options;
  options.caps.invitations.perMinute = 1;
  LinkHost host(std::move(options));
  ASSERT_NE(host.start(), 0);
  const auto key = DeviceKeyPair::numbered(1);
  host.registered->insert(base64Encode(key.publicKey()));
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(LinkClient(host.clientOptions()).invite("iPad", key), "waiting");
  }
  host.registered->clear();
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("iPad", key), "waiting");
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("iPad", key), "busy");
}

TEST_F(PeerLinkPaired, ComesPastStrangersThatWaitForAnAnswer) {
  std::vector<std::unique_ptr<LinkClient>> waiting;
  for (std::uint8_t i = 0; i < 64; ++i) {
    waiting.push_back(clientAt(10 + i));
    ASSERT_EQ(waiting.back()->invite("Eve", DeviceKeyPair::numbered(2 + i)), "waiting");
  }
  EXPECT_EQ(clientAt(2)->invite("Eve", DeviceKeyPair::numbered(100)), "busy");
  EXPECT_EQ(clientAt(2)->invite("Ada's iPad", paired), "waiting");
}

TEST_F(PeerLinkPaired, ComesPastFailedProofsOfItsOwnAddress) {
  const auto fail = [this](const DeviceKeyPair& key) {
    LinkClient client(host.clientOptions());
    if (!client.connect() || !client.receiveHello()) return std::string();
    client.sendText(client.inviteText("iPad", key, {}));
    return client.outcome();
  };
  for (int i = 0; i < 30; ++i) ASSERT_EQ(fail(DeviceKeyPair::numbered(2)), "proof");
  EXPECT_EQ(fail(DeviceKeyPair::numbered(2)), "busy");
  EXPECT_EQ(fail(paired), "proof");
  EXPECT_EQ(LinkClient(host.clientOptions()).invite("Ada's iPad", paired), "waiting");
}

// Five addresses connect four times each, and say nothing, between any two steps of a newcomer.
TEST_F(PeerLinkPaired, ComesPastConnectionsThatNeverInvite) {
  std::vector<std::unique_ptr<LinkClient>> hostile;
  const auto attack = [&] {
    for (int i = 0; i < 20; ++i) {
      hostile.push_back(clientAt(10 + i % 5));
      ASSERT_TRUE(hostile.back()->connectTcp());
    }
  };
  int letIn = 0;
  for (int i = 0; i < 40; ++i) {
    const auto newcomer = clientAt(2);
    attack();
    if (!newcomer->connectTls()) continue;
    attack();
    if (!newcomer->connect()) continue;
    attack();
    const auto nonce = newcomer->receiveHello();
    if (!nonce || !newcomer->sendText(newcomer->inviteText("Ada's iPad", paired, *nonce))) continue;
    letIn += newcomer->outcome() == "waiting" ? 1 : 0;
    hostile.clear();
  }
  EXPECT_EQ(letIn, 40);
}

}  // namespace
}  // namespace torvane
