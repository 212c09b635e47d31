#include <gtest/gtest.h>

#include "protocol/base64.h"
#include "protocol/json.h"
#include "support/link_host.h"

namespace torvane {
namespace {

using testing::DeviceKeyPair;
using testing::LinkClient;
using testing::LinkHost;

const DeviceKeyPair& adasKey() {
  static const auto key = DeviceKeyPair::numbered(1);
  return key;
}

TEST(PeerLinkPairing, AcceptedInvitationIsConnectingThenConnected) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("Ada's iPad", adasKey()), "waiting");

  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  EXPECT_EQ(invited->peer.displayName, "Ada's iPad");
  EXPECT_EQ(invited->context, adasKey().publicKey());
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

TEST(PeerLinkPairing, RefusedInvitationClosesWithoutAnEvent) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  ASSERT_TRUE(host.answerNext(false));
  EXPECT_EQ(client.outcome(), "declined");
  EXPECT_FALSE(client.receive());
  EXPECT_EQ(client.closeCode(), 1008U);
  EXPECT_TRUE(host.changes.empty());
}

TEST(PeerLinkPairing, AcceptingWithoutASessionRefuses) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  invited->handler(true, nullptr);
  EXPECT_EQ(client.outcome(), "declined");
}

TEST(PeerLinkPairing, OnlyTheFirstAnswerCounts) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  invited->handler(true, host.session);
  invited->handler(false, nullptr);
  EXPECT_EQ(client.outcome(), "accepted");
  EXPECT_TRUE(client.sendBinary(Bytes{1}));
  EXPECT_TRUE(host.received.next());
}

TEST(PeerLinkPairing, AcceptedInviterThatHasGoneIsNotConnected) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("iPad", adasKey()), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  client.close();  // by the answer to which the link knows
  invited->handler(true, host.session);
  const auto change = host.changes.next();
  ASSERT_TRUE(change);
  EXPECT_EQ(change->state, PeerState::notConnected);
  EXPECT_EQ(change->peer, invited->peer);
  EXPECT_EQ(change->session, host.session);
  EXPECT_TRUE(change->connectedPeers.empty());
}

TEST(PeerLinkPairing, InvitationWithoutAKeyReachesTheProgram) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect());
  ASSERT_TRUE(client.receiveHello());
  ASSERT_TRUE(client.sendText(R"({"type":"invite","name":"Old iPad"})"));
  EXPECT_EQ(client.outcome(), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  EXPECT_FALSE(invited->context);
}

TEST(PeerLinkPairing, HelloNamesTheComputerAndItsVersion) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_TRUE(client.connect());
  const auto message = client.receive();
  ASSERT_TRUE(message);
  const auto hello = parseJsonObject(message->text());
  ASSERT_TRUE(hello);
  EXPECT_EQ(stringMember(*hello, "name"), "Test computer");
  EXPECT_EQ(integerMember(*hello, "version"), 2);
  EXPECT_EQ(client.certificateHash(), host.address.certificate);
}

// The reason of refusal for an invitation made with other parts than this connection's own.
class PeerLinkProof : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(host.start(), 0);
    ASSERT_TRUE(client.emplace(host.clientOptions()).connect());
    const auto sent = client->receiveHello();
    ASSERT_TRUE(sent);
    nonce = *sent;
  }

  void expectRefused(const std::string& invitation) {
    ASSERT_TRUE(client->sendText(invitation));
    EXPECT_EQ(client->outcome(), "proof");
    EXPECT_FALSE(client->receive());
    EXPECT_EQ(client->closeCode(), 1008U);
    EXPECT_TRUE(host.invitations.empty());
  }

  LinkHost host;
  std::optional<LinkClient> client;
  std::array<std::uint8_t, 32> nonce{};
};

TEST_F(PeerLinkProof, RefusesASignatureOfAnotherKey) {
  const auto text = client->inviteText("iPad", adasKey(), nonce);
  auto invitation = parseJsonObject(text);
  (*invitation)["context"] = base64Encode(DeviceKeyPair::numbered(2).publicKey());
  expectRefused(*serializeJson(*invitation));
}

TEST_F(PeerLinkProof, RefusesAnotherNonce) {
  nonce[0] ^= 1U;
  expectRefused(client->inviteText("iPad", adasKey(), nonce));
}

TEST_F(PeerLinkProof, RefusesASignatureReplayedFromAnotherConnection) {
  LinkClient earlier(host.clientOptions());
  ASSERT_TRUE(earlier.connect());
  const auto earlierNonce = earlier.receiveHello();
  ASSERT_TRUE(earlierNonce);
  const auto recorded = earlier.inviteText("iPad", adasKey(), *earlierNonce);
  ASSERT_TRUE(earlier.sendText(recorded));
  ASSERT_EQ(earlier.outcome(), "waiting");
  ASSERT_TRUE(host.invitations.next());
  expectRefused(recorded);
}

TEST_F(PeerLinkProof, RefusesASignatureOverAnotherComputersCertificate) {
  LinkHost other;  // a man in the middle would show its own
  ASSERT_NE(other.start(), 0);
  LinkClient there(other.clientOptions());
  ASSERT_TRUE(there.connect());
  ASSERT_NE(there.certificateHash(), client->certificateHash());
  expectRefused(there.inviteText("iPad", adasKey(), nonce));
}

TEST_F(PeerLinkProof, RefusesAContextWithoutASignature) {
  expectRefused(R"({"type":"invite","name":"iPad","context":")" +
                base64Encode(adasKey().publicKey()) + "\"}");
}

TEST_F(PeerLinkProof, RefusesAKeyOfSmallOrder) {
  const Bytes zeroKey(32);
  const Bytes zeroSignature(64);
  expectRefused(R"({"type":"invite","name":"iPad","context":")" + base64Encode(zeroKey) +
                R"(","signature":")" + base64Encode(zeroSignature) + "\"}");
}

TEST(PeerLinkPairing, RefusesABadName) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  for (const std::string& name : {std::string(), std::string(64, 'x'), std::string("a\u2028b"),
                                  std::string("\u3164\u200B")}) {
    LinkClient client(host.clientOptions());
    EXPECT_EQ(client.invite(name, adasKey()), "name");
    EXPECT_FALSE(client.receive());
    EXPECT_EQ(client.closeCode(), 1008U);
  }
  EXPECT_TRUE(host.invitations.empty());
}

TEST(PeerLinkPairing, CutsMarksOfDirectionOutOfTheName) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  LinkClient client(host.clientOptions());
  ASSERT_EQ(client.invite("\u2067האייפד של Ada\u2069", adasKey()), "waiting");
  const auto invited = host.invitations.next();
  ASSERT_TRUE(invited);
  EXPECT_EQ(invited->peer.displayName, "האייפד של Ada");
}

TEST(PeerLinkPairing, RefusesWhatIsNoInvitation) {
  LinkHost host;
  ASSERT_NE(host.start(), 0);
  for (const char* text : {"hello", "{}", "[1]", R"({"type":"invite"})"}) {
    LinkClient client(host.clientOptions());
    ASSERT_TRUE(client.connect() && client.receiveHello());
    ASSERT_TRUE(client.sendText(text));
    EXPECT_EQ(client.outcome(), "protocol");
    EXPECT_FALSE(client.receive());
    EXPECT_EQ(client.closeCode(), 1002U);
  }
}

}  // namespace
}  // namespace torvane
